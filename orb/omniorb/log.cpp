#include "log.h"

#include <mutex>
#include <utility>

namespace orb {
namespace {

// Global, because the ORB's log function has no context argument.
std::mutex logMutex;
LogFunction logReceiver;  // guarded by logMutex

}  // namespace

void forwardLog(const char* message) {
  std::string line = message;
  while (!line.empty() && (line.back() == '\n' || line.back() == '\r')) {
    line.pop_back();
  }
  writeLog(line);
}

void writeLog(const std::string& line) {
  const std::lock_guard<std::mutex> lock(logMutex);
  if (logReceiver) {
    logReceiver(line);
  }
}

void setLogReceiver(LogFunction log) {
  const std::lock_guard<std::mutex> lock(logMutex);
  logReceiver = std::move(log);
}

}  // namespace orb
