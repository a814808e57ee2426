#include "topomanagementmgr/UserlabelMap.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <istream>
#include <streambuf>
#include <string>
#include <utility>

#include "platform/domain/DomainRecords.h"
#include "tests/support/TemporaryDirectory.h"

namespace {

using Map = UserlabelMap<NS_DOMAIN::TopoNode_T>;

constexpr const char* kAbsent = "(absent)";

class TopoUserlabelMap : public ::testing::Test {
 protected:
  void write(const std::string& content) { dir_.write("labels.txt", content); }

  // The value of a key in a map.
  static std::string find(Map& map, const std::string& key) {
    std::string value = kAbsent;
    map.GetValue(value, key);
    return value;
  }

  std::string find(const std::string& key) { return find(map_, key); }

  support::TemporaryDirectory dir_;
  const std::string fileName_ = dir_.file("labels.txt");
  Map map_{fileName_};
};

TEST_F(TopoUserlabelMap, ReadsKeysAndValuesAndSkipsIgnoredLines) {
  write("N1userLabel;Main ring\n;ignored\nplain\n");
  EXPECT_EQ(find("N1userLabel"), "Main ring");
  EXPECT_EQ(find("plain"), "plain");
  EXPECT_EQ(find("ignored"), kAbsent);
  EXPECT_EQ(find(""), kAbsent);
  EXPECT_EQ(find(";ignored"), kAbsent);
}

TEST_F(TopoUserlabelMap, SeparatesAtTheFirstSemicolonOnly) {
  write("a;b;c\nd;;\n");
  EXPECT_EQ(find("a"), "b;c");
  EXPECT_EQ(find("d"), ";");
}

TEST_F(TopoUserlabelMap, KeepsCarriageReturns) {
  write("a;b\r\nplain\r\n");
  EXPECT_EQ(find("a"), "b\r");
  EXPECT_EQ(find("plain\r"), "plain\r");
  EXPECT_EQ(find("plain"), kAbsent);
}

TEST_F(TopoUserlabelMap, TrimsNothing) {
  write(" a ; b \n#c;d\n\\;e\n");
  EXPECT_EQ(find(" a "), " b ");
  EXPECT_EQ(find("a"), kAbsent);
  EXPECT_EQ(find("#c"), "d");
  EXPECT_EQ(find("\\"), "e");
}

TEST_F(TopoUserlabelMap, StoresAnEmptyLineUnderTheEmptyKey) {
  write("a;b\n\nc;d\n");
  EXPECT_EQ(find(""), "");
}

TEST_F(TopoUserlabelMap, StoresAnEmptyValue) {
  write("a;\n");
  EXPECT_EQ(find("a"), "");
}

TEST_F(TopoUserlabelMap, ReadsALastLineWithoutALineFeed) {
  write("a;b\nc;d");
  EXPECT_EQ(find("c"), "d");
}

TEST_F(TopoUserlabelMap, HasNoEmptyKeyForALineFeedAtTheEnd) {
  write("a;b\n");
  EXPECT_EQ(find(""), kAbsent);
}

// --- Read failures.

// Returns a text, then fails as the buffer of a file does.
class BreakingBuffer : public std::streambuf {
 public:
  explicit BreakingBuffer(std::string text) : text_(std::move(text)) {}

 protected:
  int_type underflow() override {
    if (wasRead_) {
      throw std::ios_base::failure("Input/output error");
    }
    wasRead_ = true;
    setg(text_.data(), text_.data(), text_.data() + text_.size());
    return traits_type::to_int_type(text_.front());
  }

 private:
  std::string text_;
  bool wasRead_ = false;
};

// Gives a test access to Merge.
class MergingMap : public Map {
 public:
  using Map::Map;
  using Map::Merge;
};

TEST_F(TopoUserlabelMap, KeepsTheLinesBeforeAReadFailure) {
  BreakingBuffer buffer("a;1\nb;2\nc;3");
  std::istream stream(&buffer);
  MergingMap map(fileName_);
  EXPECT_NO_THROW(map.Merge(stream));
  EXPECT_EQ(find(map, "a"), "1");
  EXPECT_EQ(find(map, "b"), "2");
  EXPECT_EQ(find(map, "c"), kAbsent);
  EXPECT_EQ(find(map, "c;3"), kAbsent);
}

// The file can be opened for reading and writing, but its first page is not mapped.
TEST_F(TopoUserlabelMap, IgnoresAFileThatCannotBeRead) {
  const char* const unreadable = "/proc/self/mem";
  if (access(unreadable, R_OK | W_OK) != 0) {
    GTEST_SKIP() << "there is no such file here";
  }
  Map map(unreadable);
  EXPECT_EQ(find(map, "a"), kAbsent);
}

TEST_F(TopoUserlabelMap, UsesTheLastLineOfAKey) {
  write("a;1\nb;2\na;3\n");
  EXPECT_EQ(find("a"), "3");
}

TEST_F(TopoUserlabelMap, ComparesKeysByteByByte) {
  write("a;small\nA;big\n\xC3\xA4;umlaut\n");
  EXPECT_EQ(find("a"), "small");
  EXPECT_EQ(find("A"), "big");
  EXPECT_EQ(find("\xC3\xA4"), "umlaut");
}

TEST_F(TopoUserlabelMap, ReadsLongLines) {
  const std::string value(100000, 'x');
  write("a;" + value + "\n");
  EXPECT_EQ(find("a"), value);
}

TEST_F(TopoUserlabelMap, LeavesTheTextUnchangedWhenTheKeyIsAbsent) {
  write("a;b\n");
  std::string value = "before";
  map_.GetValue(value, "x");
  EXPECT_EQ(value, "before");
}

TEST_F(TopoUserlabelMap, ReadsTheFileAgainForEveryLookup) {
  write("a;1\n");
  EXPECT_EQ(find("a"), "1");
  write("a;2\nb;3\n");
  EXPECT_EQ(find("a"), "2");
  EXPECT_EQ(find("b"), "3");
}

// A clock that is ahead, so that all changes so far are long ago.
std::int64_t nextHour() {
  constexpr std::int64_t kHour = std::int64_t{3600} * 1000000000;
  return topo::FileStamp::systemClock() + kHour;
}

TEST_F(TopoUserlabelMap, DoesNotReadAnUnchangedFileAgain) {
  write("a;1\n");
  Map map(fileName_, nextHour);
  EXPECT_TRUE(map.LoadFile());
  EXPECT_FALSE(map.LoadFile());
  EXPECT_EQ(find(map, "a"), "1");
}

TEST_F(TopoUserlabelMap, ReadsAFileAgainThatHasChanged) {
  write("a;1\n");
  Map map(fileName_, nextHour);
  EXPECT_EQ(find(map, "a"), "1");
  write("a;1\nb;2\n");
  EXPECT_EQ(find(map, "b"), "2");
}

TEST_F(TopoUserlabelMap, ReadsAFileWithTheSameSizeAndModificationTimeAgain) {
  write("a;1\n");
  Map map(fileName_, nextHour);
  EXPECT_EQ(find(map, "a"), "1");
  const auto modified = std::filesystem::last_write_time(fileName_);
  dir_.write("other.txt", "a;2\n");
  std::filesystem::last_write_time(dir_.file("other.txt"), modified);
  std::filesystem::rename(dir_.file("other.txt"), fileName_);
  EXPECT_EQ(find(map, "a"), "2");
}

TEST_F(TopoUserlabelMap, ReadsAFileAgainThatChangedShortlyBefore) {
  write("a;1\n");
  EXPECT_TRUE(map_.LoadFile());
  EXPECT_TRUE(map_.LoadFile());
}

// The name of this thread, as a file: the system changes its content, but not its times.
class ThreadName {
 public:
  static constexpr const char* kFile = "/proc/self/comm";

  ThreadName() { prctl(PR_GET_NAME, before_); }
  ~ThreadName() { prctl(PR_SET_NAME, before_); }
  ThreadName(const ThreadName&) = delete;
  ThreadName& operator=(const ThreadName&) = delete;

  static void set(const char* name) { prctl(PR_SET_NAME, name); }

 private:
  char before_[16] = {};
};

TEST_F(TopoUserlabelMap, ReadsAFileAgainWhoseTimesDoNotShowItsChanges) {
  const ThreadName name;
  ThreadName::set("a;1");
  Map map(ThreadName::kFile, nextHour);
  EXPECT_EQ(find(map, "a"), "1");
  ThreadName::set("a;2");
  EXPECT_EQ(find(map, "a"), "2");
}

TEST_F(TopoUserlabelMap, ReadsAFileAgainThatWasMissingInBetween) {
  write("a;1\n");
  Map map(fileName_, nextHour);
  EXPECT_TRUE(map.LoadFile());
  std::filesystem::rename(fileName_, dir_.file("away.txt"));
  EXPECT_FALSE(map.LoadFile());
  std::filesystem::rename(dir_.file("away.txt"), fileName_);
  EXPECT_TRUE(map.LoadFile());
}

// A clock that a test sets ahead, and that runs a step of the test first. FileStamp reads the clock
// between the examination and the opening of a file.
std::function<void()> stepBeforeClock;
std::int64_t secondsAhead = 0;

std::int64_t testClock() {
  if (stepBeforeClock) {
    std::exchange(stepBeforeClock, nullptr)();
  }
  return topo::FileStamp::systemClock() + secondsAhead * 1000000000;
}

// The file of the labels is a symbolic link to one of two other files.
class TopoLinkedUserlabelMap : public TopoUserlabelMap {
 protected:
  TopoLinkedUserlabelMap() {
    dir_.write("one.txt", "a;1\n");
    dir_.write("two.txt", "a;2\n");
    linkTo("one.txt");
    secondsAhead = 3600;
  }

  void linkTo(const std::string& target) {
    std::filesystem::remove(fileName_);
    std::filesystem::create_symlink(dir_.file(target), fileName_);
  }

  Map linked_{fileName_, testClock};
};

TEST_F(TopoLinkedUserlabelMap, FollowsTheLink) {
  EXPECT_EQ(find(linked_, "a"), "1");
  linkTo("two.txt");
  EXPECT_EQ(find(linked_, "a"), "2");
  linkTo("one.txt");
  EXPECT_EQ(find(linked_, "a"), "1");
}

TEST_F(TopoLinkedUserlabelMap, SeesEditsOfTheTarget) {
  EXPECT_EQ(find(linked_, "a"), "1");
  dir_.write("one.txt", "a;1\nb;3\n");
  EXPECT_EQ(find(linked_, "b"), "3");
}

TEST_F(TopoLinkedUserlabelMap, ReadsTheFirstTargetAgainAfterATargetThatChangedShortlyBefore) {
  EXPECT_EQ(find(linked_, "a"), "1");
  linkTo("two.txt");
  secondsAhead = 0;
  EXPECT_EQ(find(linked_, "a"), "2");
  linkTo("one.txt");
  secondsAhead = 3600;
  EXPECT_EQ(find(linked_, "a"), "1");
}

TEST_F(TopoLinkedUserlabelMap, ReadsTheTargetAgainThatWasAwayWhileTheFileWasOpened) {
  stepBeforeClock = [this] { linkTo("two.txt"); };
  EXPECT_EQ(find(linked_, "a"), "2");
  linkTo("one.txt");
  EXPECT_EQ(find(linked_, "a"), "1");
}

// The time of the last change of the file, which no program can set.
std::int64_t changeTime(const std::string& fileName) {
  struct stat status {};
  EXPECT_EQ(stat(fileName.c_str(), &status), 0);
  return std::int64_t{status.st_ctim.tv_sec} * 1000000000 + status.st_ctim.tv_nsec;
}

TEST_F(TopoUserlabelMap, SeesAnEditThatKeepsSizeAndModificationTime) {
  write("a;1\n");
  Map map(fileName_, nextHour);
  EXPECT_EQ(find(map, "a"), "1");
  const auto modified = std::filesystem::last_write_time(fileName_);
  const std::int64_t changed = changeTime(fileName_);
  do {  // until the next tick of the system's clock of files
    write("a;2\n");
    std::filesystem::last_write_time(fileName_, modified);
  } while (changeTime(fileName_) == changed);
  EXPECT_EQ(find(map, "a"), "2");
}

TEST_F(TopoUserlabelMap, ReadsAChangedFileAgainForThreeSeconds) {
  write("a;1\n");
  Map map(fileName_, testClock);
  secondsAhead = 2;
  EXPECT_TRUE(map.LoadFile());
  EXPECT_TRUE(map.LoadFile());
  secondsAhead = 3600;
  EXPECT_TRUE(map.LoadFile());
  EXPECT_FALSE(map.LoadFile());
}

TEST_F(TopoUserlabelMap, ReadsAChangedFileAgainWithAnOldModificationTime) {
  write("a;1\n");
  std::filesystem::last_write_time(
      fileName_, std::filesystem::last_write_time(fileName_) - std::chrono::hours(1));
  EXPECT_TRUE(map_.LoadFile());
  EXPECT_TRUE(map_.LoadFile());
}

TEST_F(TopoUserlabelMap, ReadsADeviceForEveryLookup) {
  Map map("/dev/null", nextHour);
  EXPECT_TRUE(map.LoadFile());
  EXPECT_TRUE(map.LoadFile());
}

TEST_F(TopoUserlabelMap, KeepsTheLastValueOfAKeyThatLeftTheFile) {
  write("a;1\nb;2\n");
  EXPECT_EQ(find("a"), "1");
  write("b;2\n");
  EXPECT_EQ(find("a"), "1");
}

TEST_F(TopoUserlabelMap, KeepsItsEntriesWhenTheFileIsDeleted) {
  write("a;1\n");
  EXPECT_EQ(find("a"), "1");
  std::filesystem::remove(fileName_);
  EXPECT_EQ(find("a"), "1");
}

TEST_F(TopoUserlabelMap, CreatesAMissingFileAndFindsNothing) {
  EXPECT_EQ(find("a"), kAbsent);
  ASSERT_TRUE(std::filesystem::exists(fileName_));
  EXPECT_EQ(std::filesystem::file_size(fileName_), 0U);
}

TEST_F(TopoUserlabelMap, ReadsTheFileThatItCreatedOnceTheFileIsFilled) {
  EXPECT_EQ(find("a"), kAbsent);
  write("a;1\n");
  EXPECT_EQ(find("a"), "1");
}

TEST_F(TopoUserlabelMap, NeverChangesTheFile) {
  const std::string content = "a;1\n;x\nplain\r\nlast";
  write(content);
  find("a");
  find("b");
  EXPECT_EQ(support::readFile(fileName_), content);
}

TEST_F(TopoUserlabelMap, FindsNothingInAnEmptyFile) {
  write("");
  EXPECT_EQ(find("a"), kAbsent);
  EXPECT_EQ(find(""), kAbsent);
}

TEST_F(TopoUserlabelMap, FindsNothingAndCreatesNoFileWithoutAFileName) {
  const std::filesystem::path before = std::filesystem::current_path();
  std::filesystem::current_path(dir_.path());
  Map map("");
  EXPECT_EQ(find(map, "a"), kAbsent);
  EXPECT_EQ(find(map, ""), kAbsent);
  std::filesystem::current_path(before);
  EXPECT_TRUE(std::filesystem::is_empty(dir_.path()));
}

TEST_F(TopoUserlabelMap, FindsNothingWhenNoFileCanBeCreated) {
  Map map(dir_.file("missing/labels.txt"));
  EXPECT_EQ(find(map, "a"), kAbsent);
  EXPECT_TRUE(std::filesystem::is_empty(dir_.path()));
}

TEST_F(TopoUserlabelMap, FindsNothingInADirectory) {
  Map map(dir_.path().string());
  EXPECT_EQ(find(map, "a"), kAbsent);
}

// A system file that can be opened for writing and whose first read fails.
constexpr const char* kUnreadable = "/proc/self/mem";

bool isUnreadable() {
  const int file = open(kUnreadable, O_RDWR);
  char byte = 0;
  const bool failed = file >= 0 && read(file, &byte, 1) == -1;
  close(file);
  return failed;
}

TEST_F(TopoUserlabelMap, EndsQuietlyWhenReadingFailsAndKeepsItsEntries) {
  if (!isUnreadable()) {
    GTEST_SKIP() << kUnreadable << " cannot be opened, or can be read";
  }
  write("a;1\n");
  EXPECT_EQ(find("a"), "1");
  std::filesystem::remove(fileName_);
  std::filesystem::create_symlink(kUnreadable, fileName_);
  EXPECT_EQ(find("a"), "1");
  EXPECT_EQ(find(""), kAbsent);
  std::filesystem::remove(fileName_);
  write("a;2\n");
  EXPECT_EQ(find("a"), "2");
}

TEST_F(TopoUserlabelMap, ReadsAFileAgainWhoseReadingFailed) {
  if (!isUnreadable()) {
    GTEST_SKIP() << kUnreadable << " cannot be opened, or can be read";
  }
  Map map(kUnreadable, nextHour);
  EXPECT_TRUE(map.LoadFile());
  EXPECT_TRUE(map.LoadFile());
}

TEST_F(TopoUserlabelMap, LoadsWithoutALookupToo) {
  write("a;1\n");
  map_.LoadFile();
  std::filesystem::remove(fileName_);
  EXPECT_EQ(find("a"), "1");
}

TEST_F(TopoUserlabelMap, IsDestroyedThroughItsDestructorAndHasNoOtherVirtualOperation) {
  static_assert(std::has_virtual_destructor_v<Map>);
}

// Compiles only while the operations of the map are not virtual.
class MapWithOperationsOfItsOwn : public Map {
 public:
  using Map::Map;
  int GetValue(std::string&, const std::string&) { return 5; }
  int LoadFile() { return 6; }
};

TEST_F(TopoUserlabelMap, HasOrdinaryFunctionsForItsOperations) {
  write("a;1\n");
  MapWithOperationsOfItsOwn map(fileName_);
  std::string value = kAbsent;
  EXPECT_EQ(map.GetValue(value, "a"), 5);
  EXPECT_EQ(map.LoadFile(), 6);
  EXPECT_EQ(value, kAbsent);
  EXPECT_EQ(find(map, "a"), "1");
}

// Runs a check as a user without privileges. Returns its result.
template <typename Check>
bool holdsForAnOrdinaryUser(const Check& check) {
  constexpr uid_t kNobody = 65534;
  const pid_t child = fork();
  if (child == 0) {
    const bool ready = getuid() != 0 || setuid(kNobody) == 0;
    _exit(ready && check() ? 0 : 1);
  }
  int status = 0;
  waitpid(child, &status, 0);
  return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

TEST_F(TopoUserlabelMap, NeverReadsAFileThatMayNotBeWritten) {
  write("a;1\n");
  ASSERT_EQ(chmod(dir_.path().c_str(), 0755), 0);
  ASSERT_EQ(chmod(fileName_.c_str(), 0444), 0);
  EXPECT_TRUE(holdsForAnOrdinaryUser(
      [this] { return support::readFile(fileName_) == "a;1\n" && find("a") == kAbsent; }));
}

TEST_F(TopoUserlabelMap, KeepsItsEntriesWhenTheFileMayNoLongerBeWritten) {
  write("a;1\n");
  EXPECT_EQ(find("a"), "1");
  write("a;2\n");
  ASSERT_EQ(chmod(dir_.path().c_str(), 0755), 0);
  ASSERT_EQ(chmod(fileName_.c_str(), 0444), 0);
  EXPECT_TRUE(holdsForAnOrdinaryUser([this] { return find("a") == "1"; }));
}

}  // namespace
