#include "agent/northbound/Log.h"

#include <spdlog/logger.h>
#include <spdlog/sinks/stdout_sinks.h>

#include <algorithm>
#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <memory>
#include <vector>

#include "platform/agent/Logging.h"

namespace agent {
namespace {

std::atomic<int> logLevel{kLogErrors};

bool enabled(int level) {
  return level <= logLevel.load(std::memory_order_relaxed);
}

spdlog::level::level_enum priorityOf(int level) {
  switch (level) {
    case kLogErrors:
      return spdlog::level::err;
    case kLogEvents:
      return spdlog::level::info;
    default:
      return spdlog::level::debug;
  }
}

// One message is one line, of a length that a reader can bear.
std::string asLine(std::string text) {
  constexpr std::size_t kLongest = 3000;
  if (text.size() > kLongest) {
    text = text.substr(0, kLongest) + "...";
  }
  std::replace_if(
      text.begin(), text.end(), [](char c) { return c == '\n' || c == '\r'; }, ' ');
  return text;
}

std::unique_ptr<spdlog::logger> makeLogger() {
  auto logger = std::make_unique<spdlog::logger>("topo-agentd",
                                                 std::make_shared<spdlog::sinks::stderr_sink_mt>());
  logger->set_pattern("%Y-%m-%d %H:%M:%S.%f %l [%t] %v");
  logger->set_level(spdlog::level::trace);  // what is let through is decided here
  return logger;
}

// Never destroyed: threads of the ORB may have something to say until the process is gone.
spdlog::logger& logger() {
  static spdlog::logger& logger = *makeLogger().release();
  return logger;
}

void write(int level, const NS_CORBA::LogPosition& position, const char* text) {
  logger().log(priorityOf(level),
               position.file + ':' + std::to_string(position.line) + ' ' + asLine(text));
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
  thread_local LogPosition position;
  return &position;
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
