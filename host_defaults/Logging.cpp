// Defines platform/agent/Logging.h: a log on standard error that has the errors.

#include "platform/agent/Logging.h"

#include <cstdarg>
#include <cstdio>

namespace NS_CORBA {
namespace {

constexpr std::size_t kLongestText = 1000;

}  // namespace

LogPosition* GetTss() {
  thread_local LogPosition position;
  return &position;
}

void TaDebug(int level, const char* text) {
  if (level <= kLogError) {
    const LogPosition& position = *GetTss();
    std::fprintf(stderr, "%s:%d %s\n", position.file.c_str(), position.line, text);
  }
}

void TaDebugWithPara(int level, const char* format, ...) {
  char text[kLongestText];
  std::va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(text, sizeof text, format, arguments);
  va_end(arguments);
  TaDebug(level, text);
}

void NbiException(ProcessException& exception) {
  TaDebug(kLogError, exception.what());
}

}  // namespace NS_CORBA
