// platform/agent/Logging.h: the log, on standard error.

#include <cstdarg>
#include <cstdio>
#include <iostream>
#include <vector>

#include "platform/agent/Logging.h"

namespace NS_CORBA {

LogPosition* GetTss() {
  thread_local LogPosition position;
  return &position;
}

void TaDebug(int level, const char* text) {
  if (level <= kLogError) {
    const LogPosition& at = *GetTss();
    std::cerr << at.file + ":" + std::to_string(at.line) + " " + text + "\n";
  }
}

void TaDebugWithPara(int level, const char* format, ...) {
  std::vector<char> text(1000);
  std::va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(text.data(), text.size(), format, arguments);
  va_end(arguments);
  TaDebug(level, text.data());
}

void NbiException(ProcessException& exception) {
  TaDebug(kLogError, exception.detail.str().c_str());
}

}  // namespace NS_CORBA
