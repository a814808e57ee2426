#include "agent/base/RequestLog.h"

#include <exception>
#include <initializer_list>

#include "agent/base/Log.h"

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

}  // namespace

void logChange(std::string_view peer, std::string_view operation,
               std::string_view subject) noexcept {
  logRequest(kLogEvents, peer, {operation, subject.empty() ? "" : " ", subject});
}

void logRefusal(std::string_view peer, std::string_view operation,
                std::string_view reason) noexcept {
  logRequest(kLogTraces, peer, {operation, " is refused: ", reason});
}

}  // namespace agent
