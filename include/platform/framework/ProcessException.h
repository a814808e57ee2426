// The framework's internal exceptions.
//
// They travel between the host's implementations and the module, and never reach a CORBA client:
// the module turns them into globaldefs::ProcessingFailureException at the edge.
//
// The host defines the destructors: they are the key functions, so that type information exists
// once in the process and an exception thrown on one side is caught on the other.
//
// Thread-safety: none; an exception belongs to the thread that handles it.

#ifndef PLATFORM_FRAMEWORK_PROCESSEXCEPTION_H
#define PLATFORM_FRAMEWORK_PROCESSEXCEPTION_H

#include <cstdint>
#include <exception>
#include <sstream>

#include "platform/framework/Export.h"

// A failure of the platform, with its code and where it was raised.
class PLATFORM_API ProcessException : public std::exception {
 public:
  ProcessException() = default;

  // Copies the code, the line and the text of every stream. The framework's signature: an exception
  // is copied from one that is being handled, never from a constant.
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

  std::int32_t errorCode = 0;   // 0: no failure code is known
  std::int32_t line = 0;        // source line of the throw site
  std::ostringstream file;      // source file of the throw site
  std::ostringstream function;  // function of the throw site
  std::ostringstream context;   // free for the platform's own use
  std::ostringstream detail;    // what failed, for people

 private:
  // A copied stream goes on where the original stopped.
  static constexpr std::ios_base::openmode kAppend = std::ios_base::out | std::ios_base::ate;
};

// No bundle offers the wanted service interface. Always carries kInterfaceNotExist and no text.
class PLATFORM_API InterfaceNotExistException : public ProcessException {
 public:
  static constexpr std::int32_t kInterfaceNotExist = 0x41180004;

  InterfaceNotExistException() { errorCode = kInterfaceNotExist; }
  InterfaceNotExistException(InterfaceNotExistException& other) : ProcessException(other) {}

  ~InterfaceNotExistException() override;
};

#endif
