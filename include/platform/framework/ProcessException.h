// Exceptions between the host and the module.
//
// A ProcessException never reaches a CORBA client: the module translates it into
// globaldefs::ProcessingFailureException.
//
// The host defines the destructors. The destructors are the key functions of the classes, so the
// type information of each class exists once in the process, and the module catches exceptions that
// the host throws, and the reverse.
//
// Thread-safety: none; an exception belongs to the thread that handles it. Ownership: an exception
// owns its texts. Errors: the constructors may throw std::bad_alloc.

#ifndef PLATFORM_FRAMEWORK_PROCESSEXCEPTION_H
#define PLATFORM_FRAMEWORK_PROCESSEXCEPTION_H

#include <cstdint>
#include <exception>
#include <sstream>

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

  std::int32_t errorCode = 0;   // 0: the failure has no code
  std::int32_t line = 0;        // source line of the throw
  std::ostringstream file;      // source file of the throw
  std::ostringstream function;  // function of the throw
  std::ostringstream context;   // for the platform; the module does not write it
  std::ostringstream detail;    // a description of the failure, for operators

 private:
  // Text written to a copied stream follows the copied text.
  static constexpr std::ios_base::openmode kAppend = std::ios_base::out | std::ios_base::ate;
};

// No bundle offers the requested service interface. The code is always kInterfaceNotExist, and all
// streams are empty.
class PLATFORM_API InterfaceNotExistException : public ProcessException {
 public:
  static constexpr std::int32_t kInterfaceNotExist = 0x41180004;

  InterfaceNotExistException() { errorCode = kInterfaceNotExist; }
  InterfaceNotExistException(InterfaceNotExistException& other) : ProcessException(other) {}

  ~InterfaceNotExistException() override;
};

#endif
