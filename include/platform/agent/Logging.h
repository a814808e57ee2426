// The agent's log.
//
// Thread-safety: any thread; each thread has a log position of its own.

#ifndef PLATFORM_AGENT_LOGGING_H
#define PLATFORM_AGENT_LOGGING_H

#include <cstdint>
#include <string>

#include "platform/framework/Export.h"
#include "platform/framework/ProcessException.h"

namespace NS_CORBA {

// Levels: errors, refused arguments and caught exceptions; traces and dropped items.
constexpr int kLogError = 1;
constexpr int kLogTrace = 3;

// Where the calling thread logs from. Every log call reports the position as it stands then.
struct LogPosition {
  std::string file;
  std::string function;
  std::int32_t line = 0;
};

// The calling thread's log position, made on first use. Valid on this thread only.
PLATFORM_API LogPosition* GetTss();

// Writes a text at a level.
PLATFORM_API void TaDebug(int level, const char* text);

// The same with a printf-style format.
PLATFORM_API void TaDebugWithPara(int level, const char* format, ...)
    __attribute__((format(printf, 2, 3)));

// Reports a failure of the platform to the agent at the current log position. Does not throw it.
PLATFORM_API void NbiException(ProcessException& exception);

}  // namespace NS_CORBA

#endif
