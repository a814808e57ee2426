// platform/agent/Logging.h: the log, on standard error.
#include <cstdarg>
#include <cstdio>
#include <iostream>
#include "platform/agent/Logging.h"

NS_CORBA::LogPosition* NS_CORBA::GetTss() {
  thread_local LogPosition position;
  return &position;
}

void NS_CORBA::TaDebug(int level, const char* text) {
  const std::string position = GetTss()->file + ":" + std::to_string(GetTss()->line);
  if (level <= kLogError) std::cerr << position + " " + text + "\n";
}

void NS_CORBA::TaDebugWithPara(int level, const char* format, ...) {
  char text[1000];
  std::va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(text, sizeof text, format, arguments);
  va_end(arguments);
  TaDebug(level, text);
}

void NS_CORBA::NbiException(ProcessException& e) { TaDebug(kLogError, e.detail.str().c_str()); }
