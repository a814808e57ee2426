// Backups of a store in use.

#include "agent/changes/Backups.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <filesystem>
#include <memory>

#include "tests/support/TemporaryDirectory.h"
#include "tests/unit/agent/changes/ChangingHost.h"

namespace {

using agent::Backups;
using agent::Network;
using agent::NetworkWriter;
using agent::Outcome;
using agent::SqliteStore;
using std::chrono::seconds;

// A network of some megabytes, so that copying takes several steps.
Network largeNetwork() {
  Network network = wideNetwork(1000);
  for (NS_DOMAIN::TopoNode_T& node : network.topoNodes) {
    node.nativeName = std::string(4000, 'x');
  }
  return network;
}

class BackupsTest : public testing::Test {
 protected:
  // The content of all parts. Checks the size of each part.
  std::string fetched(Backups& backups) {
    std::uint64_t id = 0;
    EXPECT_EQ(agent::kSuccess, backups.begin(id).code);
    std::string all;
    Backups::Part part;
    while (!part.isLast) {
      const Outcome outcome = backups.next(id, part);
      if (outcome.code != agent::kSuccess) {
        ADD_FAILURE() << outcome.reason;
        return {};
      }
      EXPECT_GE(Backups::kPartBytes, part.content.size());
      all += part.content;
    }
    EXPECT_EQ(part.size, all.size());
    return all;
  }

  std::string complete(ChangingHost& host, std::unique_ptr<agent::StoreCopy> copy) {
    while (!host.writer().continueCopy(*copy)) {
    }
    std::string all = copy->read(copy->size());
    host.writer().endCopy(std::move(copy));
    return all;
  }

  // The network in a store with this content.
  agent::Network storedIn(const std::string& content) {
    SqliteStore store(directory_.write("backup.db", content));
    store.check();
    return store.read();
  }

  std::size_t files() const {
    const std::filesystem::directory_iterator all(directory_.path());
    return static_cast<std::size_t>(std::distance(begin(all), end(all)));
  }

  const support::TemporaryDirectory directory_;
  const std::string path_ = directory_.file("store.db");
};

TEST_F(BackupsTest, AreStores) {
  for (const std::string& path : {path_, std::string(SqliteStore::kInMemory)}) {
    ChangingHost host(path, largeNetwork());
    Backups backups(host.writer());
    EXPECT_EQ(host.store().read(), storedIn(fetched(backups)));
  }
}

TEST_F(BackupsTest, ContainChangesThatAreCommittedBetweenSteps) {
  for (const std::string& path : {path_, std::string(SqliteStore::kInMemory)}) {
    ChangingHost host(path, largeNetwork());
    auto copy = host.writer().beginCopy();
    ASSERT_FALSE(host.writer().continueCopy(*copy));
    EXPECT_TRUE(host.nodes().rename("node 0", "renamed").ok());  // in the copied part
    EXPECT_TRUE(host.nodes().create(nodeOf("new", "node 0")).ok());
    std::size_t removed = 0;
    EXPECT_TRUE(host.nodes().remove("node 999", removed).ok());  // in the remaining part
    EXPECT_EQ(host.store().read(), storedIn(complete(host, std::move(copy))));
  }
}

TEST_F(BackupsTest, ContainNoChangesAfterTheLastStep) {
  ChangingHost host(path_, largeNetwork());
  auto copy = host.writer().beginCopy();
  while (!host.writer().continueCopy(*copy)) {
  }
  const agent::Network before = host.store().read();
  EXPECT_TRUE(host.nodes().rename("node 0", "renamed").ok());
  EXPECT_EQ(before, storedIn(complete(host, std::move(copy))));
}

TEST_F(BackupsTest, AreMadeWhileChangesArePaused) {
  ChangingHost host(path_, wideNetwork(3));
  Backups backups(host.writer());
  const NetworkWriter::Pause pause(host.writer(), std::chrono::minutes(1));
  EXPECT_EQ(wideNetwork(3), storedIn(fetched(backups)));
}

TEST_F(BackupsTest, RemoveTheirFileInEveryState) {
  ChangingHost host(path_, largeNetwork());
  const std::size_t before = files();
  Backups backups(host.writer());
  std::uint64_t id = 0;
  Backups::Part part;
  EXPECT_TRUE(backups.begin(id).ok());
  EXPECT_EQ(before, files());
  EXPECT_TRUE(backups.next(id, part).ok());
  EXPECT_EQ(before, files());
  backups.end(id);
  EXPECT_EQ(before, files());
}

TEST_F(BackupsTest, RejectASecondBackupDuringTheFirst) {
  ChangingHost host(path_, largeNetwork());
  seconds now{100000};
  Backups backups(host.writer(), [&] { return std::chrono::steady_clock::time_point(now); });
  std::uint64_t first = 0;
  std::uint64_t second = 0;
  Backups::Part part;
  EXPECT_TRUE(backups.begin(first).ok());
  now += Backups::kIdle - seconds(1);
  EXPECT_EQ(agent::kTooMuch, backups.begin(second).code);
  EXPECT_EQ(agent::kSuccess, backups.next(first, part).code);
  now += Backups::kIdle - seconds(1);
  const Outcome refusal = backups.begin(second);
  EXPECT_EQ(agent::kTooMuch, refusal.code);
  EXPECT_EQ("another backup is being fetched", refusal.reason);
  EXPECT_EQ(agent::kSuccess, backups.next(first, part).code);
}

TEST_F(BackupsTest, AreReplacedWhenIdle) {
  ChangingHost host(path_, largeNetwork());
  seconds now{100000};
  Backups backups(host.writer(), [&] { return std::chrono::steady_clock::time_point(now); });
  std::uint64_t first = 0;
  std::uint64_t second = 0;
  Backups::Part part;
  EXPECT_TRUE(backups.begin(first).ok());
  now += Backups::kIdle;
  EXPECT_EQ(agent::kSuccess, backups.begin(second).code);
  EXPECT_EQ(agent::kEntityNotFound, backups.next(first, part).code);
  EXPECT_EQ(agent::kSuccess, backups.next(second, part).code);
}

TEST_F(BackupsTest, EndAfterTheLastPartAndByEnd) {
  ChangingHost host(path_, wideNetwork(3));
  Backups backups(host.writer());
  std::uint64_t id = 0;
  Backups::Part part;
  EXPECT_TRUE(backups.begin(id).ok());
  EXPECT_TRUE(backups.next(id, part).ok());
  EXPECT_TRUE(part.isLast);
  EXPECT_EQ(agent::kEntityNotFound, backups.next(id, part).code);
  EXPECT_EQ(agent::kSuccess, backups.begin(id).code);
  backups.end(id + 1);  // another one's
  EXPECT_EQ(agent::kTooMuch, backups.begin(id).code);
  backups.end(id);
  EXPECT_EQ(agent::kEntityNotFound, backups.next(id, part).code);
}

std::string nameOf(const Network& network) {
  return network.ems + std::to_string(network.objectAttributes->size());
}

TEST_F(BackupsTest, ShareTheirPlaceWithExports) {
  ChangingHost host(path_, wideNetwork(3));
  Backups backups(host.writer());
  std::uint64_t id = 0;
  std::uint64_t other = 0;
  Backups::Part part;
  EXPECT_TRUE(backups.beginExport(id, nameOf).ok());
  EXPECT_EQ(agent::kTooMuch, backups.begin(other).code);
  EXPECT_TRUE(backups.next(id, part).ok());
  EXPECT_EQ(wideNetwork(3).ems + "0", part.content);
  EXPECT_EQ(part.content.size(), part.size);
  EXPECT_TRUE(part.isLast);
  EXPECT_EQ(agent::kEntityNotFound, backups.next(id, part).code);
  EXPECT_TRUE(backups.begin(other).ok());
}

TEST_F(BackupsTest, ReserveMemoryWhileAnExportIsWritten) {
  ChangingHost host(path_, wideNetwork(3));
  auto memory = std::make_shared<int>();
  std::uint64_t stored = 0;
  Backups backups(host.writer(), std::chrono::steady_clock::now, {100, [&](std::uint64_t bytes) {
                                                                    stored = bytes;
                                                                    return memory;
                                                                  }});
  std::uint64_t id = 0;
  long users = 0;
  const auto write = [&](const Network&) {
    users = memory.use_count();
    return std::string(100, 'x');
  };
  EXPECT_TRUE(backups.beginExport(id, write).ok());
  EXPECT_EQ(2, users);
  EXPECT_EQ(1, memory.use_count());
  EXPECT_EQ(host.store().bytes(), stored);
  EXPECT_LT(0U, stored);
  backups.end(id);
  memory.reset();
  const Outcome refusal = backups.beginExport(id, write);
  EXPECT_EQ(agent::kTooMuch, refusal.code);
  EXPECT_EQ("memory is short for an export (--memory)", refusal.reason);
}

TEST_F(BackupsTest, RefuseAnExportThatNoRestoreAccepts) {
  ChangingHost host(path_, wideNetwork(3));
  Backups backups(host.writer(), std::chrono::steady_clock::now, {100, nullptr});
  std::uint64_t id = 0;
  const Outcome refusal =
      backups.beginExport(id, [](const Network&) { return std::string(101, 'x'); });
  EXPECT_EQ(agent::kTooMuch, refusal.code);
  EXPECT_EQ("the export has 101 bytes, but a restore accepts 100 (--max-message)", refusal.reason);
  EXPECT_TRUE(backups.begin(id).ok());
}

// Truncates the copy of a backup.
void cutCopy(std::size_t bytes) {
  std::filesystem::path copy;
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
    std::error_code status;
    const std::string file = std::filesystem::read_symlink(entry.path(), status);
    if (file.find("-backup-") != std::string::npos) {
      copy = entry.path();
    }
  }
  std::filesystem::resize_file(copy, bytes);
}

TEST_F(BackupsTest, EndAfterAFailedRead) {
  ChangingHost host(path_, largeNetwork());
  Backups backups(host.writer());
  std::uint64_t id = 0;
  Backups::Part part;
  EXPECT_TRUE(backups.begin(id).ok());
  while (part.content.empty()) {
    ASSERT_EQ(agent::kSuccess, backups.next(id, part).code);
  }
  cutCopy(part.content.size());
  EXPECT_EQ(agent::kInternalError, backups.next(id, part).code);
  EXPECT_EQ(agent::kEntityNotFound, backups.next(id, part).code);
  EXPECT_EQ(agent::kSuccess, backups.begin(id).code);
}

// Limits the number of further files that the process can open, until the end of the scope.
class FewDescriptors {
 public:
  explicit FewDescriptors(int more) {
    getrlimit(RLIMIT_NOFILE, &before_);
    const rlimit low{static_cast<rlim_t>(next() + more), before_.rlim_max};
    setrlimit(RLIMIT_NOFILE, &low);
  }
  ~FewDescriptors() { setrlimit(RLIMIT_NOFILE, &before_); }
  FewDescriptors(const FewDescriptors&) = delete;
  FewDescriptors& operator=(const FewDescriptors&) = delete;

  // The lowest free descriptor.
  static int next() {
    const int descriptor = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
    ::close(descriptor);
    return descriptor;
  }

 private:
  rlimit before_{};
};

TEST_F(BackupsTest, LeakNoFileOrDescriptorWhenDescriptorsRunOut) {
#ifdef __SANITIZE_ADDRESS__
  GTEST_SKIP() << "the sanitizer opens a descriptor to check the type of an object";
#endif
  ChangingHost host(path_, wideNetwork(3));
  Backups backups(host.writer());
  const int descriptor = FewDescriptors::next();
  const std::size_t before = files();
  std::uint64_t id = 0;
  for (const int more : {0, 1}) {
    {
      const FewDescriptors few(more);
      EXPECT_EQ(agent::kInternalError, backups.begin(id).code);
    }
    EXPECT_EQ(descriptor, FewDescriptors::next());
    EXPECT_EQ(before, files());
  }
  EXPECT_EQ(agent::kSuccess, backups.begin(id).code);
}

TEST_F(BackupsTest, ReportTheReasonOfAFailedStart) {
  auto folder = std::make_unique<support::TemporaryDirectory>();
  ChangingHost host(folder->file("store.db"), wideNetwork(3));
  std::filesystem::remove_all(folder->path());
  Backups backups(host.writer());
  std::uint64_t id = 0;
  const Outcome failure = backups.begin(id);
  EXPECT_EQ(agent::kInternalError, failure.code);
  EXPECT_NE(std::string::npos, failure.reason.find("No such file or directory")) << failure.reason;
}

}  // namespace
