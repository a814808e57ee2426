#include "log.h"

#include <utility>

#include "sync/Mutex.h"

namespace orb {
namespace {

// Global, because the ORB's log function has no context argument.
Mutex logMutex;
LogFunction logReceiver GUARDED_BY(logMutex);

}  // namespace

void forwardLog(const char* message) {
  std::string line = message;
  while (!line.empty() && (line.back() == '\n' || line.back() == '\r')) {
    line.pop_back();
  }
  writeLog(line);
}

void writeLog(const std::string& line) {
  const MutexLock lock(logMutex);
  if (logReceiver) {
    logReceiver(line);
  }
}

void setLogReceiver(LogFunction log) {
  const MutexLock lock(logMutex);
  logReceiver = std::move(log);
}

}  // namespace orb
