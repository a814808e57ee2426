#include "tests/unit/agent/events/PlatformSupport.h"

#include <mutex>
#include <utility>

#include "platform/agent/Logging.h"
#include "platform/bundlemgr/ServiceInterface.h"

namespace {

std::mutex linesMutex;
std::vector<std::string> lines;  // guarded by linesMutex

}  // namespace

std::vector<std::string> takeLogLines() {
  const std::lock_guard<std::mutex> lock(linesMutex);
  return std::exchange(lines, {});
}

namespace NS_CORBA {

LogPosition* GetTss() {
  static thread_local LogPosition position;
  return &position;
}

void TaDebug(int level, const char* text) {
  const LogPosition& position = *GetTss();
  const std::lock_guard<std::mutex> lock(linesMutex);
  lines.push_back(std::to_string(level) + ' ' + position.file + ':' +
                  std::to_string(position.line) + ' ' + text);
}

}  // namespace NS_CORBA

ProcessException::~ProcessException() = default;

namespace NS_BUNDLEMGR1 {

ServiceInterface::~ServiceInterface() = default;

}  // namespace NS_BUNDLEMGR1
