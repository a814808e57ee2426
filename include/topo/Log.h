// Log sites of the module.
//
// The agent reports a message at the calling thread's log position, so every site first says where
// it is.

#ifndef TOPO_LOG_H
#define TOPO_LOG_H

#include <cstdint>

#include "platform/agent/Logging.h"

namespace topo {

// Function names are never told.
constexpr const char* kUnknownFunction = "unknown";

// Where a message comes from. Operators' filters know some of these numbers, so where a number is
// fixed it is a constant beside its text and does not follow the source.
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

// For destructors: whatever the log raises is dropped.
inline void logTextQuietly(const LogSite& site, int level, const char* text) noexcept {
  try {
    logText(site, level, text);
  } catch (...) {
    // There is no one left to tell.
  }
}

}  // namespace topo

#endif
