#include "tests/unit/agent/events/PlatformSupport.h"

#include <mutex>
#include <utility>

#include "agent/base/Log.h"

namespace {

std::mutex linesMutex;
std::vector<LogLine> lines;  // guarded by linesMutex

}  // namespace

std::vector<LogLine> takeLogLines() {
  const std::lock_guard<std::mutex> lock(linesMutex);
  return std::exchange(lines, {});
}

namespace agent {

void log(int level, const std::string& text) {
  const std::lock_guard<std::mutex> lock(linesMutex);
  lines.push_back({level, text});
}

}  // namespace agent
