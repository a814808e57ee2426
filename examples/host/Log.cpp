// platform/agent/Logging.h: the log, on standard error.
#include <cstdarg>
#include <cstdio>
#include "platform/agent/Logging.h"

NS_CORBA::LogPosition* NS_CORBA::GetTss() {
  thread_local LogPosition position;
  return &position;
}

void NS_CORBA::TaDebug(int level, const char* text) {
  if (level <= kLogError)
    std::fprintf(stderr, "%s:%d %s\n", GetTss()->file.c_str(), GetTss()->line, text);
}

void NS_CORBA::TaDebugWithPara(int level, const char* format, ...) {
  char text[1000];
  std::va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(text, sizeof text, format, arguments);
  va_end(arguments);
  TaDebug(level, text);
}

void NS_CORBA::NbiException(ProcessException& failure) { TaDebug(kLogError, failure.what()); }
