// Exceptions between the host and the module.
//
// The consequence of an exception of the host depends on the call. A "CORBA exception" is
// globaldefs::ProcessingFailureException or a CORBA system exception.
//
//   call                           CORBA exception       ProcessException     any other exception
//   load: factory, init            leaves the module, passes through the service configurator
//   request: servant, iterator     reaches the client    ends the process     ends the process
//   node query: DomainInterface    reaches the client    failure code (1)     ends the process
//   clock query: DomainInterface   ERR_TOPO_CONVERSION   failure code         ERR_TOPO_CONVERSION
//   event: HandleEvent             logged; the rest of the event is dropped
//   lookup of an interface         ends the process, in each of the calls above
//
// (1) In the view below a subnetwork, the exception is logged, and the view continues with the
// nodes that were read.
//
// "Ends the process" is std::terminate, before any reply: a client triggers the end with an
// ordinary request. Each function of the contracts says what it may raise and what it must not
// raise. "Must not raise" includes std::bad_alloc. BundleMgr.h describes fini.
//
// The host defines the destructors. The destructors are the key functions of the classes, so the
// type information of each class exists once in the process, and the module catches exceptions that
// the host throws, and the reverse.
//
// Thread-safety: none, what() included; an exception belongs to the thread that handles it.
// Ownership: an exception owns its texts. Errors: the constructors may throw std::bad_alloc. Texts
// are UTF-8.

#ifndef PLATFORM_FRAMEWORK_PROCESSEXCEPTION_H
#define PLATFORM_FRAMEWORK_PROCESSEXCEPTION_H

#include <cstdint>
#include <exception>
#include <ios>
#include <sstream>
#include <string>
#include <utility>

#include "platform/framework/Export.h"

// A failure of the platform, with a failure code and the source position of the throw.
class PLATFORM_API ProcessException : public std::exception {
 public:
  ProcessException() = default;

  // Copies the code, the line and the text of every stream. The parameter is not const, as the
  // framework defines it: a handler copies the exception that it caught.
  ProcessException(ProcessException& other)
      : std::exception(other),
        errorCode(other.errorCode),
        line(other.line),
        file(other.file.str(), kAppend),
        function(other.function.str(), kAppend),
        context(other.context.str(), kAppend),
        detail(other.detail.str(), kAppend) {}

  ProcessException& operator=(const ProcessException&) = delete;

  ~ProcessException() override;

  // "code CODE: DETAIL", or "code CODE" without a detail; when memory is short, a text without code
  // and detail. The text reflects the members at the time of the call. It belongs to the exception
  // and is valid until the next call, at most until the exception is destroyed.
  //
  // Inline: a host that defines only the destructors links.
  const char* what() const noexcept override {
    try {
      return store(describe());
    } catch (...) {
      return "ProcessException";
    }
  }

  std::int32_t errorCode = 0;   // 0: the failure has no code
  std::int32_t line = 0;        // source line of the throw
  std::ostringstream file;      // source file of the throw
  std::ostringstream function;  // function of the throw
  // For the platform; the module does not write to the stream. Mutable: what() stores its text
  // here.
  mutable std::ostringstream context;
  std::ostringstream detail;  // a description of the failure, for operators

 private:
  // Text written to a copied stream follows the copied text.
  static constexpr std::ios_base::openmode kAppend = std::ios_base::out | std::ios_base::ate;

  std::string describe() const {
    const std::string text = detail.str();
    return "code " + std::to_string(errorCode) + (text.empty() ? "" : ": " + text);
  }

  // Stores a text in a slot of `context`, whose destructor frees the text. Not in a member: the
  // layout of the class is the framework's, and the same in every version of this header.
  const char* store(std::string text) const {
    static const int slot = std::ios_base::xalloc();
    if (context.pword(slot) == nullptr) {
      context.register_callback(&releaseText, slot);
      context.pword(slot) = new std::string;
    }
    auto& stored = *static_cast<std::string*>(context.pword(slot));
    stored = std::move(text);
    return stored.c_str();
  }

  static void releaseText(std::ios_base::event event, std::ios_base& stream, int slot) {
    if (event == std::ios_base::erase_event) {
      delete static_cast<std::string*>(stream.pword(slot));
    }
    if (event != std::ios_base::imbue_event) {
      stream.pword(slot) = nullptr;  // after copyfmt, the text belongs to the other stream
    }
  }
};

// No bundle offers the requested service interface. The code is always kInterfaceNotExist, and all
// streams are empty. what() is "code 1092091908: no bundle publishes the service interface".
class PLATFORM_API InterfaceNotExistException : public ProcessException {
 public:
  static constexpr std::int32_t kInterfaceNotExist = 0x41180004;

  InterfaceNotExistException() { errorCode = kInterfaceNotExist; }
  InterfaceNotExistException(InterfaceNotExistException& other) : ProcessException(other) {}

  ~InterfaceNotExistException() override;

  const char* what() const noexcept override {
    return "code 1092091908: no bundle publishes the service interface";
  }
};

#endif
