#include "agent/base/BackgroundLogger.h"

#include <spdlog/async_logger.h>
#include <spdlog/details/null_mutex.h>
#include <spdlog/details/thread_pool.h>
#include <spdlog/sinks/base_sink.h>

#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <string>
#include <utility>

#include "sync/Mutex.h"

namespace agent {
namespace {

constexpr const char* kName = "topo-agentd";

template <typename Mutex>
class LineSink : public spdlog::sinks::base_sink<Mutex> {
 public:
  explicit LineSink(WriteLine write) : write_(std::move(write)) {}

 protected:
  void sink_it_(const spdlog::details::log_msg& message) override {
    spdlog::memory_buf_t line;
    this->formatter_->format(message, line);
    write_({line.data(), line.size()});
  }

  void flush_() override {}

 private:
  const WriteLine write_;
};

void configure(spdlog::logger& logger) {
  logger.set_pattern("%Y-%m-%d %H:%M:%S.%f %l [%t] %v");
  logger.set_level(spdlog::level::trace);  // the callers check the level
  // By default a failure is printed on standard error, which may block.
  logger.set_error_handler([](const std::string&) {});
}

}  // namespace

std::unique_ptr<spdlog::logger> makeDirectLogger(const WriteLine& write) {
  auto logger =
      std::make_unique<spdlog::logger>(kName, std::make_shared<LineSink<std::mutex>>(write));
  configure(*logger);
  return logger;
}

// The thread of the pool calls sink_it_() and flush_(); any thread may call the other functions.
class BackgroundLogger::Sink final : public LineSink<spdlog::details::null_mutex> {
 public:
  Sink(const WriteLine& write, spdlog::details::thread_pool& thread)
      : LineSink(write), thread_(thread) {}

  std::uint64_t flushes() {
    const MutexLock lock(mutex_);
    return flushes_;
  }

  bool waitForFlushAfter(std::uint64_t earlier, std::chrono::milliseconds patience) {
    MutexLock lock(mutex_);
    return flushed_.wait_for(lock.native(), patience,
                             [&]() REQUIRES(mutex_) { return flushes_ > earlier; });
  }

 protected:
  void sink_it_(const spdlog::details::log_msg& message) override {
    reportDropped();
    LineSink::sink_it_(message);
  }

  void flush_() override {
    const MutexLock lock(mutex_);
    ++flushes_;
    flushed_.notify_all();
  }

 private:
  // The counter of the pool counts an evicted flush as a line.
  void reportDropped() {
    const std::size_t dropped = thread_.overrun_counter();
    if (dropped != reported_) {
      const std::string text = "topo-agentd:0 " + std::to_string(dropped - reported_) +
                               " lines of the log were dropped, because they were not read in time";
      reported_ = dropped;
      LineSink::sink_it_(spdlog::details::log_msg(kName, spdlog::level::err, text));
    }
  }

  spdlog::details::thread_pool& thread_;
  std::size_t reported_ = 0;

  Mutex mutex_;
  std::condition_variable flushed_;
  std::uint64_t flushes_ GUARDED_BY(mutex_) = 0;
};

BackgroundLogger::BackgroundLogger(const WriteLine& write, std::size_t mostWaiting)
    : thread_(std::make_shared<spdlog::details::thread_pool>(mostWaiting, 1)),
      sink_(std::make_shared<Sink>(write, *thread_)),
      logger_(std::make_shared<spdlog::async_logger>(
          kName, sink_, thread_, spdlog::async_overflow_policy::overrun_oldest)) {
  configure(*logger_);
}

BackgroundLogger::~BackgroundLogger() {
  thread_.reset();
}

bool BackgroundLogger::flush(std::chrono::milliseconds patience) {
  const std::uint64_t earlier = sink_->flushes();
  logger_->flush();
  return sink_->waitForFlushAfter(earlier, patience);
}

}  // namespace agent
