#include "agent/northbound/Log.h"

#include <algorithm>
#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <vector>

#include "ace/Log_Msg.h"
#include "ace/TSS_T.h"
#include "platform/agent/Logging.h"

namespace agent {
namespace {

std::atomic<int> logLevel{kLogErrors};

bool enabled(int level) {
  return level <= logLevel.load(std::memory_order_relaxed);
}

ACE_Log_Priority priorityOf(int level) {
  switch (level) {
    case kLogErrors:
      return LM_ERROR;
    case kLogEvents:
      return LM_INFO;
    default:
      return LM_DEBUG;
  }
}

// One record is one line, and no longer than ACE's records are.
std::string asLine(std::string text) {
  constexpr std::size_t kLongest = 3000;
  if (text.size() > kLongest) {
    text = text.substr(0, kLongest) + "...";
  }
  std::replace_if(
      text.begin(), text.end(), [](char c) { return c == '\n' || c == '\r'; }, ' ');
  return text;
}

void write(int level, const NS_CORBA::LogPosition& position, const char* text) {
  ACE_Log_Msg::instance()->log(priorityOf(level), ACE_TEXT("%D %M [%t] %C:%d %C\n"),
                               position.file.c_str(), static_cast<int>(position.line),
                               asLine(text).c_str());
}

// The length of what vsnprintf makes of a format is only known afterwards.
std::string formatted(const char* format, std::va_list arguments) {
  std::va_list again;
  va_copy(again, arguments);
  const int length = std::vsnprintf(nullptr, 0, format, arguments);
  std::vector<char> text(length < 0 ? 1 : static_cast<std::size_t>(length) + 1);
  if (length >= 0) {
    std::vsnprintf(text.data(), text.size(), format, again);
  }
  va_end(again);
  return text.data();
}

}  // namespace

void setLogLevel(int level) {
  logLevel.store(level, std::memory_order_relaxed);
}

void log(int level, const std::string& text) {
  if (enabled(level)) {
    write(level, {"topo-agentd", "", 0}, text.c_str());
  }
}

}  // namespace agent

namespace NS_CORBA {

LogPosition* GetTss() {
  static ACE_TSS<LogPosition> position;
  return position.operator->();
}

void TaDebug(int level, const char* text) {
  if (agent::enabled(level)) {
    agent::write(level, *GetTss(), text);
  }
}

void TaDebugWithPara(int level, const char* format, ...) {
  if (!agent::enabled(level)) {
    return;
  }
  std::va_list arguments;
  va_start(arguments, format);
  const std::string text = agent::formatted(format, arguments);
  va_end(arguments);
  agent::write(level, *GetTss(), text.c_str());
}

void NbiException(ProcessException& exception) {
  TaDebugWithPara(kLogError, "platform failure %d: %s", exception.errorCode,
                  exception.detail.str().c_str());
}

}  // namespace NS_CORBA
