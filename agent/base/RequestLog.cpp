#include "agent/base/RequestLog.h"

#include <exception>
#include <initializer_list>
#include <utility>

#include "agent/base/Log.h"
#include "sync/SharedMutex.h"

namespace agent {
namespace {

void logRequest(int level, std::string_view peer,
                std::initializer_list<std::string_view> parts) noexcept {
  if (!isLogged(level)) {
    return;
  }
  try {
    std::string text(peer.empty() ? "this process" : peer);
    text += ": ";
    for (const std::string_view part : parts) {
      text += part;
    }
    log(level, text);
  } catch (const std::exception&) {
    // Memory is short: the request matters more than its line.
  }
}

struct Recorder {
  SharedMutex mutex;
  RequestRecorder record GUARDED_BY(mutex);
};

Recorder& recorder() {
  static Recorder recorder;
  return recorder;
}

}  // namespace

void setRequestRecorder(RequestRecorder record) {
  Recorder& present = recorder();
  const WriteLock lock(present.mutex);
  present.record = std::move(record);
}

bool isRecorded() {
  Recorder& present = recorder();
  const ReadLock lock(present.mutex);
  return present.record != nullptr;
}

void recordRequest(const RequestRecord& record) {
  Recorder& present = recorder();
  const ReadLock lock(present.mutex);
  if (present.record) {
    present.record(record);
  }
}

void logChange(std::string_view peer, std::string_view operation,
               std::string_view subject) noexcept {
  logRequest(kLogEvents, peer, {operation, subject.empty() ? "" : " ", subject});
}

void logRefusal(std::string_view peer, std::string_view operation,
                std::string_view reason) noexcept {
  logRequest(kLogTraces, peer, {operation, " is refused: ", reason});
}

}  // namespace agent
