// Log calls of the module.
//
// The agent logs a message with the log position of the calling thread, so each function sets the
// position first. Thread-safety: any thread. Ownership: texts are borrowed for the call.
// Errors: exceptions of the log pass, except in logTextQuietly.

#ifndef TOPO_LOG_H
#define TOPO_LOG_H

#include <cstdint>

#include "platform/agent/Logging.h"

namespace topo {

// The function name of every log position of the module.
constexpr const char* kUnknownFunction = "unknown";

// The source position of a message. Operators filter for some of the line numbers: such a number is
// a constant beside the text of the message, and stays the same when the source changes.
struct LogSite {
  const char* file;
  std::int32_t line;
};

inline void setLogPosition(const LogSite& site) {
  NS_CORBA::LogPosition* position = NS_CORBA::GetTss();
  position->file = site.file;
  position->function = kUnknownFunction;
  position->line = site.line;
}

inline void logText(const LogSite& site, int level, const char* text) {
  setLogPosition(site);
  NS_CORBA::TaDebug(level, text);
}

template <typename... Arguments>
void logFormat(const LogSite& site, int level, const char* format, Arguments... arguments) {
  setLogPosition(site);
  NS_CORBA::TaDebugWithPara(level, format, arguments...);
}

// For destructors: drops exceptions of the log.
inline void logTextQuietly(const LogSite& site, int level, const char* text) noexcept {
  try {
    logText(site, level, text);
  } catch (...) {
    // The failure of the log cannot be logged.
  }
}

}  // namespace topo

#endif
