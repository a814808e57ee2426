#include "tests/unit/agent/events/PlatformSupport.h"

#include <mutex>
#include <utility>

#include "agent/base/Log.h"

namespace {

std::mutex linesMutex;
std::vector<std::string> lines;  // guarded by linesMutex

}  // namespace

std::vector<std::string> takeLogLines() {
  const std::lock_guard<std::mutex> lock(linesMutex);
  return std::exchange(lines, {});
}

namespace agent {

void log(int level, const std::string& text) {
  const std::lock_guard<std::mutex> lock(linesMutex);
  lines.push_back(std::to_string(level) + ' ' + text);
}

}  // namespace agent
