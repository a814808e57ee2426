// Defines platform/agent/Logging.h: the log as modules use it.

#include "platform/agent/Logging.h"

#include <cstdarg>
#include <cstdio>
#include <string_view>
#include <vector>

#include "agent/base/Log.h"

namespace NS_CORBA {
namespace {

void logHere(int level, std::string_view text) {
  const LogPosition& position = *GetTss();
  agent::logAt(level, position.file, position.line, text);
}

// vsnprintf reports the length of a text only after it has formatted the text.
std::vector<char> formatted(const char* format, std::va_list arguments) {
  std::va_list again;
  va_copy(again, arguments);
  const int length = std::vsnprintf(nullptr, 0, format, arguments);
  std::vector<char> text(length < 0 ? 1 : static_cast<std::size_t>(length) + 1);
  if (length >= 0) {
    std::vsnprintf(text.data(), text.size(), format, again);
  }
  va_end(again);
  return text;
}

}  // namespace

LogPosition* GetTss() {
  thread_local LogPosition position;
  return &position;
}

void TaDebug(int level, const char* text) {
  logHere(level, text);
}

void TaDebugWithPara(int level, const char* format, ...) {
  if (!agent::isLogged(level)) {
    return;
  }
  std::va_list arguments;
  va_start(arguments, format);
  const std::vector<char> text = formatted(format, arguments);
  va_end(arguments);
  logHere(level, text.data());
}

void NbiException(ProcessException& exception) {
  TaDebugWithPara(kLogError, "platform failure %d: %s", exception.errorCode,
                  exception.detail.str().c_str());
}

}  // namespace NS_CORBA
