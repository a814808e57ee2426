#include "agent/base/Log.h"

#include <spdlog/logger.h>
#include <unistd.h>

#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <string_view>
#include <vector>

#include "agent/base/BackgroundLogger.h"
#include "agent/base/Text.h"
#include "agent/process/WriteWithin.h"
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

constexpr std::size_t kLongestText = 3000;
constexpr std::size_t kWaitingLines = 1000;

void writeToStandardError(std::string_view line) {
  writeWithin(STDERR_FILENO, line, kNoLimit);
}

// Neither is ever destroyed: threads of the ORB may log until the process is gone.
spdlog::logger& directLogger() {
  static spdlog::logger& logger = *makeDirectLogger(writeToStandardError).release();
  return logger;
}

std::atomic<BackgroundLogger*> background{nullptr};

spdlog::logger& logger() {
  BackgroundLogger* const present = background.load();
  return present == nullptr ? directLogger() : present->logger();
}

void write(int level, const NS_CORBA::LogPosition& position, std::string_view text) {
  logger().log(priorityOf(level), position.file + ':' + std::to_string(position.line) + ' ' +
                                      escaped(text, kLongestText));
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
    write(level, {"topo-agentd", "", 0}, text);
  }
}

void logInBackground() {
  background.store(new BackgroundLogger(writeToStandardError, kWaitingLines));
}

bool flushLog(std::chrono::milliseconds patience) {
  BackgroundLogger* const present = background.load();
  return present == nullptr || present->flush(patience);
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
  agent::write(level, *GetTss(), text);
}

void NbiException(ProcessException& exception) {
  TaDebugWithPara(kLogError, "platform failure %d: %s", exception.errorCode,
                  exception.detail.str().c_str());
}

}  // namespace NS_CORBA
