// The agent's log.
//
// A caller first sets the log position of its thread (GetTss), then writes the message: the agent
// logs the message with that position.
//
// Thread-safety: any thread; each thread has its own log position. Ownership: texts are borrowed
// for the call. Texts are UTF-8.
//
// Errors: no function may raise anything but CORBA exceptions during a request: any other exception
// ends the process. A client triggers a log call with a view of a network that has a node of an
// unknown type or with the id "0", with a view whose domain query fails, and with every view that
// needs an iterator. During init an exception of the log makes init fail; during an event it ends
// the event; in destructors and in the log lines about a failed event it is dropped.

#ifndef PLATFORM_AGENT_LOGGING_H
#define PLATFORM_AGENT_LOGGING_H

#include <cstdint>
#include <string>

#include "platform/framework/Export.h"
#include "platform/framework/ProcessException.h"

namespace NS_CORBA {

constexpr int kLogError = 1;  // errors, refused arguments, caught exceptions
constexpr int kLogTrace = 3;  // traces, and items left out of a result

// The source position that a thread's next log call reports.
struct LogPosition {
  std::string file;
  std::string function;
  std::int32_t line = 0;
};

// The log position of the calling thread, made on the thread's first call and never null. The agent
// owns the position; only the calling thread may use the pointer. The position outlives the
// module: a thread may exist before the load and after the unload.
// Must not raise anything but CORBA exceptions during a request: ends the process.
PLATFORM_API LogPosition* GetTss();

// Writes a text at a level (kLogError, kLogTrace).
// Must not raise anything but CORBA exceptions during a request: ends the process.
PLATFORM_API void TaDebug(int level, const char* text);

// Writes a printf-style format with its arguments at a level.
// Must not raise anything but CORBA exceptions during a request: ends the process.
PLATFORM_API void TaDebugWithPara(int level, const char* format, ...)
    __attribute__((format(printf, 2, 3)));

// Reports a platform failure to the agent at the current log position. The caller throws the
// exception afterwards; NbiException does not. The module calls NbiException when Name2Index fails,
// immediately before the process ends (CorbaUtilInterface.h): a log line that is not written at
// once is lost.
// Must not raise anything but CORBA exceptions: ends the process.
PLATFORM_API void NbiException(ProcessException& exception);

}  // namespace NS_CORBA

#endif
