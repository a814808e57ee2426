// The record of changes and refusals, one JSON object a line.

#ifndef AGENT_ACCESS_AUDITLOG_H
#define AGENT_ACCESS_AUDITLOG_H

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <thread>

#include "agent/base/RequestLog.h"
#include "sync/Mutex.h"

namespace agent {

// Where the lines go. Both functions are called on the thread of the AuditLog and return the reason
// of a failure, "" after a success.
struct AuditSink {
  std::function<std::string(std::string_view line)> write;
  std::function<std::string()> reopen;  // after the rotation of a file
};

// Appends to a file. Throws FileError.
AuditSink auditFile(const std::string& file);

// Sends to the journal of systemd.
AuditSink auditJournal();

struct AuditLimits {
  std::size_t queue = 2000;  // lines that wait for the sink; refusals may use half of them
  std::size_t perPeer = 20;  // refusals and failures of one peer in an interval
  std::size_t peers = 1000;  // further peers share one limit
  std::chrono::seconds interval{10};
  std::chrono::milliseconds pause{1000};  // between attempts to report what was left out
};

struct AuditStatus {
  std::uint64_t lost = 0;  // changes, failures and refusals without a line, since the start
  std::string failure;     // of the last write, or else of the last reopening; "" if neither failed
};

// Writes a line for every change, and for failures and refusals at a limited rate for each peer. A
// thread writes, so that no request waits for the disk. Lines that cannot be written, or have no
// room in the queue, are counted, and a later line has their number. The log of the agent has a
// line when writing begins to fail and when it succeeds again.
//
// Thread-safety: any thread.
// Ownership: owns the sink and the thread; the destructor writes the queued lines.
// Errors: the constructor throws std::system_error; record throws nothing.
class AuditLog {
 public:
  // Called on the threads of requests and on the thread of this object.
  using Clock = std::function<std::chrono::system_clock::time_point()>;

  AuditLog(AuditSink sink, Clock clock, AuditLimits limits = {});
  ~AuditLog();

  AuditLog(const AuditLog&) = delete;
  AuditLog& operator=(const AuditLog&) = delete;

  void record(const RequestRecord& record) noexcept;

  // Lines that are recorded later go to the reopened sink. The log of the agent has a failure.
  void reopen();

  AuditStatus status() const;

 private:
  using Time = std::chrono::system_clock::time_point;

  // The refusals of a peer in an interval.
  struct Refusals {
    Time begin;
    std::size_t written = 0;
    std::uint64_t leftOut = 0;
  };

  void add(const RequestRecord& record);
  bool admitLocked(const RequestRecord& record, Time now) REQUIRES(mutex_);
  void pushLocked(std::string line, std::size_t room) REQUIRES(mutex_);
  void endIntervalsLocked(Time now, bool all) REQUIRES(mutex_);

  void run();
  void writeQueue();
  bool writeLine(const std::string& line);
  void reportLost();
  void reopenSink();

  const AuditSink sink_;
  const Clock clock_;
  const AuditLimits limits_;

  mutable Mutex mutex_;
  std::condition_variable changed_;
  std::deque<std::string> queue_ GUARDED_BY(mutex_);
  std::map<std::string, Refusals> refusals_ GUARDED_BY(mutex_);  // by peer
  std::uint64_t unreported_ GUARDED_BY(mutex_) = 0;  // lost, and no line has their number yet
  std::uint64_t lost_ GUARDED_BY(mutex_) = 0;
  std::string failure_ GUARDED_BY(mutex_);        // of the last write
  std::string reopenFailure_ GUARDED_BY(mutex_);  // of the last reopening
  bool reopens_ GUARDED_BY(mutex_) = false;
  bool ends_ GUARDED_BY(mutex_) = false;
  std::thread thread_;
};

}  // namespace agent

#endif
