#include "agent/access/AuditLog.h"

#include <array>
#include <cstdio>
#include <ctime>
#include <memory>
#include <nlohmann/json.hpp>
#include <utility>

#include "agent/base/Log.h"
#include "agent/base/PrintableText.h"
#include "agent/process/AppendedFile.h"
#include "agent/process/Journal.h"

namespace agent {
namespace {

using Json = nlohmann::ordered_json;
using Outcome = RequestRecord::Outcome;
using Transport = orb::Peer::Transport;

constexpr std::size_t kMostText = 1000;

const char* nameOf(Transport transport) {
  switch (transport) {
    case Transport::kTcp:
      return "tcp";
    case Transport::kUnix:
      return "unix";
    case Transport::kTls:
      return "tls";
    case Transport::kLocal:
      break;
  }
  return "local";
}

const char* nameOf(Outcome outcome) {
  switch (outcome) {
    case Outcome::kDone:
      return "done";
    case Outcome::kFailed:
      return "failed";
    case Outcome::kRefused:
      break;
  }
  return "refused";
}

// RFC 3339, with milliseconds.
std::string utcText(std::chrono::system_clock::time_point time) {
  const auto sinceEpoch =
      std::chrono::floor<std::chrono::milliseconds>(time.time_since_epoch()).count();
  constexpr int kMillisecondsOfSecond = 1000;
  const std::time_t seconds =
      std::chrono::system_clock::to_time_t(std::chrono::floor<std::chrono::seconds>(time));
  std::tm utc{};
  gmtime_r(&seconds, &utc);
  std::array<char, 40> text{};
  const std::size_t length = std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%S", &utc);
  std::array<char, 8> fraction{};
  std::snprintf(fraction.data(), fraction.size(), ".%03dZ",
                static_cast<int>(sinceEpoch % kMillisecondsOfSecond));
  return std::string(text.data(), length) + fraction.data();
}

// ASCII only: other characters are escaped.
std::string textOf(const Json& line) {
  return line.dump(-1, ' ', true, Json::error_handler_t::replace);
}

std::string lineOf(const RequestRecord& record, std::chrono::system_clock::time_point now) {
  Json line;
  line["time"] = utcText(now);
  line["peer"] = record.peer.address;
  line["transport"] = nameOf(record.peer.transport);
  line["certificate"] = printable(record.peer.subject, kMostText);
  line["object"] = printable(record.object, kMostText);
  line["operation"] = printable(record.operation, kMostText);
  line["target"] = printable(record.target, kMostText);
  line["outcome"] = nameOf(record.outcome);
  line["reason"] = printable(record.reason, kMostText);
  return textOf(line);
}

std::string leftOutLine(std::chrono::system_clock::time_point now, std::uint64_t count,
                        const std::string& peer, const char* reason) {
  Json line;
  line["time"] = utcText(now);
  line["peer"] = peer;
  line["outcome"] = "left out";
  line["count"] = count;
  line["reason"] = reason;
  return textOf(line);
}

}  // namespace

AuditSink auditFile(const std::string& file) {
  const auto appended = std::make_shared<AppendedFile>(file);
  return {[appended](std::string_view line) { return appended->append(line); },
          [appended] { return appended->reopen(); }};
}

AuditSink auditJournal() {
  return {sendToJournal, [] { return std::string(); }};
}

AuditLog::AuditLog(AuditSink sink, Clock clock, AuditLimits limits)
    : sink_(std::move(sink)), clock_(std::move(clock)), limits_(limits) {
  thread_ = std::thread([this] { run(); });
}

AuditLog::~AuditLog() {
  {
    const MutexLock lock(mutex_);
    ends_ = true;
  }
  changed_.notify_one();
  thread_.join();
}

void AuditLog::record(const RequestRecord& record) noexcept {
  try {
    add(record);
  } catch (const std::exception&) {
    const MutexLock lock(mutex_);  // memory is short
    ++lost_;
    ++unreported_;
  }
}

void AuditLog::add(const RequestRecord& record) {
  const Time now = clock_();
  const bool isChange = record.outcome == Outcome::kDone;
  {
    const MutexLock lock(mutex_);
    if (!isChange && !admitLocked(record, now)) {
      return;
    }
  }
  std::string line = lineOf(record, now);
  const MutexLock lock(mutex_);
  pushLocked(std::move(line), isChange ? limits_.queue : limits_.queue / 2);
  changed_.notify_one();
}

// Whether the peer is within its limit. Counts the refusal otherwise.
bool AuditLog::admitLocked(const RequestRecord& record, Time now) {
  std::string peer = printable(orb::format(record.peer));
  if (refusals_.size() >= limits_.peers && refusals_.count(peer) == 0) {
    peer = "other peers";
  }
  Refusals& refusals = refusals_.try_emplace(peer, Refusals{now}).first->second;
  if (refusals.written < limits_.perPeer) {
    ++refusals.written;
    return true;
  }
  ++refusals.leftOut;
  ++lost_;
  return false;
}

void AuditLog::pushLocked(std::string line, std::size_t room) {
  if (queue_.size() >= room) {
    ++lost_;
    ++unreported_;
    return;
  }
  queue_.push_back(std::move(line));
}

// Reports the refusals that were left out in intervals that have ended. A clock that was set back
// ends an interval, too.
void AuditLog::endIntervalsLocked(Time now, bool all) {
  for (auto entry = refusals_.begin(); entry != refusals_.end();) {
    const auto& [peer, refusals] = *entry;
    if (!all && now >= refusals.begin && now < refusals.begin + limits_.interval) {
      ++entry;
      continue;
    }
    if (refusals.leftOut > 0) {
      queue_.push_back(leftOutLine(now, refusals.leftOut, peer, "too many refusals of this peer"));
    }
    entry = refusals_.erase(entry);
  }
}

void AuditLog::reopen() {
  {
    const MutexLock lock(mutex_);
    reopens_ = true;
  }
  changed_.notify_one();
}

AuditStatus AuditLog::status() const {
  const MutexLock lock(mutex_);
  return {lost_, failure_.empty() ? reopenFailure_ : failure_};
}

void AuditLog::run() {
  bool ends = false;
  while (!ends) {
    bool reopens = false;
    {
      MutexLock lock(mutex_);
      const auto hasWork = [this]()
                               REQUIRES(mutex_) { return ends_ || reopens_ || !queue_.empty(); };
      if (refusals_.empty() && unreported_ == 0) {
        changed_.wait(lock.native(), hasWork);
      } else {
        changed_.wait_for(lock.native(), limits_.pause, hasWork);
      }
      ends = ends_;
      reopens = std::exchange(reopens_, false);
    }
    try {
      if (reopens) {
        reopenSink();
      }
      writeQueue();
    } catch (const std::exception&) {
      // Memory is short: the next round continues.
    }
  }
}

void AuditLog::writeQueue() {
  std::deque<std::string> lines;
  {
    const Time now = clock_();
    const MutexLock lock(mutex_);
    endIntervalsLocked(now, ends_);
    lines.swap(queue_);
  }
  std::uint64_t failed = 0;
  for (const std::string& line : lines) {
    failed += writeLine(line) ? 0 : 1;
  }
  {
    const MutexLock lock(mutex_);
    lost_ += failed;
    unreported_ += failed;
  }
  reportLost();
}

// Logs the first failure and the first success after failures.
bool AuditLog::writeLine(const std::string& line) {
  const std::string failure = sink_.write(line);
  std::string former;
  {
    const MutexLock lock(mutex_);
    former = std::exchange(failure_, failure);
  }
  if (former.empty() && !failure.empty()) {
    log(kLogErrors, "the audit log cannot be written: " + failure);
  } else if (!former.empty() && failure.empty()) {
    log(kLogErrors, "the audit log is written again");
  }
  return failure.empty();
}

void AuditLog::reportLost() {
  std::uint64_t count = 0;
  {
    const MutexLock lock(mutex_);
    count = unreported_;
  }
  if (count == 0 ||
      !writeLine(leftOutLine(clock_(), count, "", "no room, or the log could not be written"))) {
    return;
  }
  const MutexLock lock(mutex_);
  unreported_ -= count;
}

void AuditLog::reopenSink() {
  const std::string failure = sink_.reopen();
  if (!failure.empty()) {
    log(kLogErrors, "the audit log cannot be reopened: " + failure);
  }
  const MutexLock lock(mutex_);
  reopenFailure_ = failure;
}

}  // namespace agent
