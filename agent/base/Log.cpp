#include "agent/base/Log.h"

#include <spdlog/logger.h>
#include <unistd.h>

#include <atomic>

#include "agent/base/BackgroundLogger.h"
#include "agent/base/PrintableText.h"
#include "agent/process/WriteWithin.h"

namespace agent {
namespace {

std::atomic<int> logLevel{kLogErrors};

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

// The direct and the background logger are never destroyed, because threads of the ORB may log
// until the process ends.
spdlog::logger& directLogger() {
  static spdlog::logger& logger = *makeDirectLogger(writeToStandardError).release();
  return logger;
}

std::atomic<BackgroundLogger*> background{nullptr};

spdlog::logger& logger() {
  BackgroundLogger* const present = background.load();
  return present == nullptr ? directLogger() : present->logger();
}

}  // namespace

void setLogLevel(int level) {
  logLevel.store(level, std::memory_order_relaxed);
}

bool isLogged(int level) {
  return level <= logLevel.load(std::memory_order_relaxed);
}

void log(int level, const std::string& text) {
  logAt(level, "topo-agentd", 0, text);
}

void logAt(int level, const std::string& file, int line, std::string_view text) {
  if (isLogged(level)) {
    logger().log(priorityOf(level),
                 file + ':' + std::to_string(line) + ' ' + escaped(text, kLongestText));
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
