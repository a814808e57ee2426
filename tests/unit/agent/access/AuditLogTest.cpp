#include "agent/access/AuditLog.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <csignal>
#include <memory>
#include <mutex>
#include <nlohmann/json.hpp>
#include <numeric>
#include <vector>

#include "agent/process/ReadFile.h"
#include "tests/support/PrivateJournal.h"
#include "tests/support/TemporaryDirectory.h"
#include "tests/unit/agent/support/CapturedLog.h"

namespace agent {
namespace {

using nlohmann::json;
using orb::Peer;
using testing::HasSubstr;
using Outcome = RequestRecord::Outcome;

// Collects lines. Can fail, and can block the writing thread.
class FakeSink {
 public:
  AuditSink sink() {
    return {[this](std::string_view line) { return write(line); },
            [this] {
              ++reopened;
              return reopenFailure;
            }};
  }

  void fail(const std::string& reason) {
    const std::lock_guard<std::mutex> lock(mutex_);
    failure_ = reason;
  }

  void block(bool isBlocked) {
    const std::lock_guard<std::mutex> lock(mutex_);
    isBlocked_ = isBlocked;
    changed_.notify_all();
  }

  // Waits until so many calls of write have begun.
  void awaitCalls(std::size_t count) {
    std::unique_lock<std::mutex> lock(mutex_);
    EXPECT_TRUE(changed_.wait_for(lock, std::chrono::minutes(1), [&] { return calls_ >= count; }));
  }

  void awaitLines(std::size_t count) {
    std::unique_lock<std::mutex> lock(mutex_);
    EXPECT_TRUE(
        changed_.wait_for(lock, std::chrono::minutes(1), [&] { return lines_.size() >= count; }));
  }

  std::vector<json> lines() {
    const std::lock_guard<std::mutex> lock(mutex_);
    std::vector<json> result;
    std::transform(lines_.begin(), lines_.end(), std::back_inserter(result),
                   [](const std::string& line) { return json::parse(line); });
    return result;
  }

  std::string text(std::size_t line) {
    const std::lock_guard<std::mutex> lock(mutex_);
    return lines_.at(line);
  }

  std::atomic<int> reopened{0};
  std::string reopenFailure;  // set while the log does not call reopen

 private:
  std::string write(std::string_view line) {
    std::unique_lock<std::mutex> lock(mutex_);
    ++calls_;
    changed_.notify_all();
    changed_.wait(lock, [this] { return !isBlocked_; });
    if (failure_.empty()) {
      lines_.emplace_back(line);
      changed_.notify_all();
    }
    return failure_;
  }

  std::mutex mutex_;
  std::condition_variable changed_;
  std::vector<std::string> lines_;
  std::string failure_;
  std::size_t calls_ = 0;
  bool isBlocked_ = false;
};

class AuditLogs : public testing::Test {
 protected:
  static Peer peer(const std::string& address = "10.1.2.3") {
    return {Peer::Transport::kTls, address, "CN=noc,O=Operator", 0};
  }

  static RequestRecord change(const std::string& target = "\"core\"") {
    return {peer(), "TopoAgentConsole", "deleteNode", target, Outcome::kDone, ""};
  }

  static RequestRecord refusal(const std::string& address = "10.1.2.3") {
    return {peer(address), "TopoAgentConsole", "deleteNode", "", Outcome::kRefused, "no role"};
  }

  // Starts the log. The clock of the log is time_.
  void start(const AuditLimits& limits = {}) {
    log_ = std::make_unique<AuditLog>(
        sink_.sink(),
        [this] { return std::chrono::system_clock::time_point(std::chrono::milliseconds(time_)); },
        limits);
  }

  // Ends the log, which writes the queued lines.
  std::vector<json> end() {
    log_.reset();
    return sink_.lines();
  }

  static std::size_t count(const std::vector<json>& lines, const char* outcome) {
    return static_cast<std::size_t>(
        std::count_if(lines.begin(), lines.end(),
                      [outcome](const json& line) { return line["outcome"] == outcome; }));
  }

  // The sum of the records without a line.
  static int leftOut(const std::vector<json>& lines) {
    return std::accumulate(lines.begin(), lines.end(), 0,
                           [](int sum, const json& line) { return sum + line.value("count", 0); });
  }

  support::CapturedLog captured_{kLogErrors};
  FakeSink sink_;
  std::atomic<std::int64_t> time_{1763845443007};  // 2025-11-22T21:04:03.007Z
  std::unique_ptr<AuditLog> log_;
};

TEST_F(AuditLogs, WriteOneLineForAChange) {
  start();
  log_->record(change());
  end();
  EXPECT_EQ(R"({"time":"2025-11-22T21:04:03.007Z","peer":"10.1.2.3","transport":"tls",)"
            R"("certificate":"CN=noc,O=Operator","object":"TopoAgentConsole",)"
            R"("operation":"deleteNode","target":"\"core\"","outcome":"done","reason":""})",
            sink_.text(0));
}

TEST_F(AuditLogs, NameTransportAndOutcome) {
  start();
  RequestRecord record = change();
  record.peer = {Peer::Transport::kUnix, "", "", 0};
  record.outcome = Outcome::kFailed;
  record.reason = "there is no node";
  log_->record(record);
  record.peer.transport = Peer::Transport::kTcp;
  record.outcome = Outcome::kRefused;
  log_->record(record);
  const std::vector<json> lines = end();
  ASSERT_EQ(2U, lines.size());
  EXPECT_EQ("unix", lines[0]["transport"]);
  EXPECT_EQ("failed", lines[0]["outcome"]);
  EXPECT_EQ("there is no node", lines[0]["reason"]);
  EXPECT_EQ("tcp", lines[1]["transport"]);
  EXPECT_EQ("refused", lines[1]["outcome"]);
}

TEST_F(AuditLogs, EscapeTextsFromOutside) {
  start();
  RequestRecord record = change("a\"\n{\"outcome\":\"done\"}\x1b\xff\xc3\xa4");
  record.operation = std::string(100000, 'x');
  log_->record(record);
  end();
  const std::string line = sink_.text(0);
  EXPECT_EQ(std::string::npos, line.find('\n'));
  EXPECT_TRUE(std::all_of(line.begin(), line.end(), [](char c) { return c >= ' ' && c <= '~'; }));
  EXPECT_LT(line.size(), 2000U);
  EXPECT_EQ("a\"\\x0a{\"outcome\":\"done\"}\\x1b\\xff\xc3\xa4", json::parse(line)["target"]);
}

TEST_F(AuditLogs, LimitTheRefusalsOfEachPeer) {
  AuditLimits limits;
  limits.perPeer = 3;
  start(limits);
  for (int i = 0; i < 10; ++i) {
    log_->record(refusal());
  }
  log_->record(refusal("10.1.2.4"));
  EXPECT_EQ(7U, log_->status().lost);
  const std::vector<json> lines = end();
  EXPECT_EQ(4U, count(lines, "refused"));
  ASSERT_EQ(1U, count(lines, "left out"));
  EXPECT_EQ(7, leftOut(lines));
  EXPECT_EQ("10.1.2.3 (CN=noc,O=Operator)", lines.back()["peer"]);
}

TEST_F(AuditLogs, ReportLeftOutRefusalsAfterTheInterval) {
  AuditLimits limits;
  limits.perPeer = 1;
  limits.pause = std::chrono::milliseconds(1);
  start(limits);
  log_->record(refusal());
  log_->record(refusal());
  time_ += 10000;
  sink_.awaitLines(2);
  EXPECT_EQ("left out", sink_.lines()[1]["outcome"]);
  log_->record(refusal());
  EXPECT_EQ(2U, count(end(), "refused"));
}

TEST_F(AuditLogs, LimitManyPeersTogether) {
  AuditLimits limits;
  limits.perPeer = 2;
  limits.peers = 3;
  start(limits);
  for (int i = 0; i < 100; ++i) {
    log_->record(refusal("10.1.2." + std::to_string(i)));
  }
  const std::vector<json> lines = end();
  EXPECT_EQ(3U + 2U, count(lines, "refused"));
  EXPECT_EQ("other peers", lines.back()["peer"]);
  EXPECT_EQ(95, leftOut(lines));
}

TEST_F(AuditLogs, DoNotLimitChanges) {
  start();
  for (int i = 0; i < 500; ++i) {
    log_->record(change());
  }
  EXPECT_EQ(500U, count(end(), "done"));
}

TEST_F(AuditLogs, KeepRoomForChanges) {
  AuditLimits limits;
  limits.queue = 10;
  limits.perPeer = 1000;
  sink_.block(true);
  start(limits);
  log_->record(change());
  sink_.awaitCalls(1);  // the thread has taken the first line
  for (int i = 0; i < 100; ++i) {
    log_->record(refusal());
  }
  for (int i = 0; i < 100; ++i) {
    log_->record(change());
  }
  EXPECT_EQ(95U + 95U, log_->status().lost);
  sink_.block(false);
  const std::vector<json> lines = end();
  EXPECT_EQ(5U, count(lines, "refused"));
  EXPECT_EQ(6U, count(lines, "done"));
  EXPECT_EQ(190, leftOut(lines));
}

TEST_F(AuditLogs, DoNotBlockRequestsWhileTheSinkBlocks) {
  sink_.block(true);
  start();
  for (int i = 0; i < 10000; ++i) {
    log_->record(change());
  }
  EXPECT_GT(log_->status().lost, 0U);
  sink_.block(false);
}

TEST_F(AuditLogs, ReportAFailureOnceAndTheLostLinesLater) {
  AuditLimits limits;
  limits.pause = std::chrono::milliseconds(1);
  sink_.fail("No space left on device");
  start(limits);
  log_->record(change("1"));
  log_->record(change("2"));
  sink_.awaitCalls(4);  // with attempts to report
  EXPECT_EQ("No space left on device", log_->status().failure);
  EXPECT_EQ(2U, log_->status().lost);
  sink_.fail("");
  sink_.awaitLines(1);
  log_->record(change("3"));
  const std::vector<json> lines = end();
  ASSERT_EQ(2U, lines.size());
  EXPECT_EQ("left out", lines[0]["outcome"]);
  EXPECT_EQ(2, leftOut(lines));
  EXPECT_EQ("3", lines[1]["target"]);
  const std::string text = captured_.text();
  EXPECT_THAT(text, HasSubstr("the audit log cannot be written: No space left on device\n"));
  EXPECT_THAT(text, HasSubstr("the audit log is written again\n"));
  EXPECT_EQ(2, std::count(text.begin(), text.end(), '\n'));
}

TEST_F(AuditLogs, ReopenTheSink) {
  start();
  log_->reopen();
  end();
  EXPECT_EQ(1, sink_.reopened);
}

TEST_F(AuditLogs, ReportAFailedReopeningUntilItSucceeds) {
  sink_.reopenFailure = "no such directory";
  start();
  log_->reopen();
  log_->record(change());
  sink_.awaitLines(1);  // written after the reopening
  log_->record(change());
  sink_.awaitLines(2);  // the status has the outcome of the first write
  EXPECT_EQ("no such directory", log_->status().failure);
}

TEST(AuditFile, IsCreatedForItsOwnerAndGroup) {
  const support::TemporaryDirectory directory;
  const std::string file = directory.file("audit");
  const mode_t former = ::umask(0);
  const AuditSink sink = auditFile(file);
  ::umask(former);
  struct stat status {};
  ASSERT_EQ(0, ::stat(file.c_str(), &status));
  EXPECT_EQ(0640U, status.st_mode & 07777U);
}

TEST(AuditFile, AppendsLines) {
  const support::TemporaryDirectory directory;
  const std::string file = directory.write("audit", "former\n");
  const AuditSink sink = auditFile(file);
  EXPECT_EQ("", sink.write("one"));
  EXPECT_EQ("", sink.write("two"));
  EXPECT_EQ("former\none\ntwo\n", support::readFile(file));
}

TEST(AuditFile, IsReopenedAfterItsRotation) {
  const support::TemporaryDirectory directory;
  const std::string file = directory.file("audit");
  const AuditSink sink = auditFile(file);
  sink.write("one");
  std::filesystem::rename(file, file + ".1");
  EXPECT_EQ("", sink.reopen());
  sink.write("two");
  EXPECT_EQ("one\n", support::readFile(file + ".1"));
  EXPECT_EQ("two\n", support::readFile(file));
}

TEST(AuditFile, StaysInUseWhenItCannotBeReopened) {
  const support::TemporaryDirectory directory;
  const std::string file = directory.file("audit");
  const AuditSink sink = auditFile(file);
  std::filesystem::rename(file, file + ".1");
  std::filesystem::create_directory(file);
  EXPECT_EQ(file + ": Is a directory", sink.reopen());
  EXPECT_EQ("", sink.write("one"));
  EXPECT_EQ("one\n", support::readFile(file + ".1"));
}

TEST(AuditFile, RejectsWhatIsNotARegularFile) {
  const support::TemporaryDirectory directory;
  EXPECT_THROW(auditFile(directory.path()), FileError);
  EXPECT_THROW(auditFile(directory.file("none") + "/audit"), FileError);
  const std::string fifo = directory.file("fifo");
  ASSERT_EQ(0, ::mkfifo(fifo.c_str(), 0600));
  EXPECT_THROW(auditFile(fifo), FileError);
  EXPECT_THROW(auditFile("/dev/null"), FileError);
}

TEST(AuditFile, ReturnsTheReasonOfAFailedWrite) {
  const AuditSink sink = [] {
    const support::TemporaryDirectory directory;
    return auditFile(directory.file("audit"));
  }();
  const std::unique_ptr<rlimit> former = std::make_unique<rlimit>();
  ASSERT_EQ(0, ::getrlimit(RLIMIT_FSIZE, former.get()));
  const auto handler = std::signal(SIGXFSZ, SIG_IGN);
  const rlimit none{0, former->rlim_max};
  ASSERT_EQ(0, ::setrlimit(RLIMIT_FSIZE, &none));
  EXPECT_EQ("File too large", sink.write("one"));
  ::setrlimit(RLIMIT_FSIZE, former.get());
  std::signal(SIGXFSZ, handler);
  EXPECT_EQ("", sink.write("two"));
}

TEST(AuditJournal, HasAnEntryForAChange) {
  support::runWithoutJournal([] {
    const support::JournalSocket journal;
    AuditLog log(auditJournal(), std::chrono::system_clock::now);
    log.record({{Peer::Transport::kTls, "10.1.2.3", "CN=noc", 0},
                "TopoAgentConsole",
                "deleteNode",
                "\"core\"",
                Outcome::kDone,
                ""});
    const std::string entry = journal.next();
    EXPECT_THAT(entry, testing::StartsWith("MESSAGE={\"time\":"));
    EXPECT_THAT(entry, HasSubstr("\"operation\":\"deleteNode\""));
    EXPECT_EQ("", log.status().failure);
    log.reopen();
  });
}

TEST(AuditJournal, ThatDoesNotRunCountsAsAFailure) {
  support::runWithoutJournal([] {
    support::CapturedLog captured(kLogErrors);
    {
      AuditLog log(auditJournal(), std::chrono::system_clock::now);
      log.record({{}, "TopoAgentConsole", "deleteNode", "", Outcome::kDone, ""});
    }
    EXPECT_THAT(captured.text(),
                HasSubstr("the audit log cannot be written: the journal does not run"));
  });
}

}  // namespace
}  // namespace agent
