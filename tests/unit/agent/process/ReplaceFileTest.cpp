// Replacement of files in one step.

#include "agent/process/ReplaceFile.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "tests/support/TemporaryDirectory.h"

namespace {

using agent::replaceFile;
using support::readFile;
using testing::ElementsAre;
using testing::UnorderedElementsAre;

std::function<int(int descriptor)> onSync;  // replaces fsync unless empty

}  // namespace

// Replaces fsync of the C library in this program.
int fsync(int descriptor) {
  return onSync ? onSync(descriptor) : static_cast<int>(syscall(SYS_fsync, descriptor));
}

namespace {

class ReplacedFile : public testing::Test {
 protected:
  ~ReplacedFile() override { onSync = nullptr; }

  std::vector<std::string> names() const {
    std::vector<std::string> result;
    for (const auto& entry : std::filesystem::directory_iterator(directory_.path())) {
      result.push_back(entry.path().filename());
    }
    return result;
  }

  // The reason of a failed replacement; empty after success.
  static std::string failureOf(const std::string& path) {
    try {
      replaceFile("note", path, "new");
    } catch (const agent::FileError& failure) {
      return failure.what();
    }
    return {};
  }

  support::TemporaryDirectory directory_;
};

TEST_F(ReplacedFile, HasTheNewContentAndLeavesNoDraft) {
  const std::string path = directory_.write("file", "old");
  replaceFile("note", path, "new");
  EXPECT_EQ("new", readFile(path));
  EXPECT_THAT(names(), UnorderedElementsAre("file"));
}

TEST_F(ReplacedFile, ReplacesASymbolicLink) {
  const std::string target = directory_.write("target", "untouched");
  std::filesystem::create_symlink(target, directory_.file("file"));
  replaceFile("note", directory_.file("file"), "new");
  EXPECT_EQ("untouched", readFile(target));
  EXPECT_FALSE(std::filesystem::is_symlink(directory_.file("file")));
  EXPECT_EQ("new", readFile(directory_.file("file")));
}

TEST_F(ReplacedFile, IgnoresALinkWithAGuessedNameOfTheDraft) {
  const std::string target = directory_.write("target", "untouched");
  std::filesystem::create_symlink(target, directory_.file("file.new"));
  replaceFile("note", directory_.file("file"), "new");
  EXPECT_EQ("untouched", readFile(target));
  EXPECT_THAT(names(), UnorderedElementsAre("file", "file.new", "target"));
}

TEST_F(ReplacedFile, HasTheModeThatTheUmaskAllows) {
  const std::string path = directory_.file("file");
  for (const auto& [mask, expected] : {std::pair{0022, 0644}, std::pair{0027, 0640}}) {
    const mode_t before = ::umask(static_cast<mode_t>(mask));
    replaceFile("note", path, "new");
    ::umask(before);
    EXPECT_EQ(expected, static_cast<int>(std::filesystem::status(path).permissions()));
  }
}

TEST_F(ReplacedFile, IsNoDeviceOrPipe) {
  const std::string pipe = directory_.file("pipe");
  ASSERT_EQ(0, mkfifo(pipe.c_str(), 0600));
  std::filesystem::create_symlink(pipe, directory_.file("link"));
  for (const std::string& path : {pipe, directory_.file("link")}) {
    EXPECT_EQ("note " + path + ": cannot be written: it is not a regular file", failureOf(path));
  }
  EXPECT_TRUE(std::filesystem::is_fifo(pipe));
  EXPECT_THAT(names(), UnorderedElementsAre("pipe", "link"));
}

TEST_F(ReplacedFile, IsUnchangedWhenTheRenameFails) {
  const std::string folder = directory_.file("folder");
  std::filesystem::create_directory(folder);
  EXPECT_EQ("note " + folder + ": cannot be written: Is a directory", failureOf(folder));
  EXPECT_THAT(names(), UnorderedElementsAre("folder"));
}

// A call of fsync: of a folder or of a file, and the content of the replaced file at that moment.
struct Sync {
  bool isFolder;
  std::size_t bytes;  // of a file
  std::string present;
};
bool operator==(const Sync& left, const Sync& right) {
  return left.isFolder == right.isFolder && left.bytes == right.bytes &&
         left.present == right.present;
}

TEST_F(ReplacedFile, IsSyncedBeforeTheRenameAndItsFolderAfterwards) {
  const std::string path = directory_.write("file", "old");
  std::vector<Sync> synced;
  onSync = [&](int descriptor) {
    struct stat status {};
    fstat(descriptor, &status);
    const bool isFolder = S_ISDIR(status.st_mode);
    const std::size_t bytes = isFolder ? 0 : static_cast<std::size_t>(status.st_size);
    synced.push_back({isFolder, bytes, readFile(path)});
    return 0;
  };
  replaceFile("note", path, "new");
  EXPECT_THAT(synced, ElementsAre(Sync{false, 3, "old"}, Sync{true, 0, "new"}));
}

TEST_F(ReplacedFile, IsUnchangedWhenTheSyncFails) {
  const std::string path = directory_.write("file", "old");
  onSync = [](int) {
    errno = EIO;
    return -1;
  };
  EXPECT_EQ("note " + path + ": cannot be written: Input/output error", failureOf(path));
  EXPECT_EQ("old", readFile(path));
  EXPECT_THAT(names(), UnorderedElementsAre("file"));
}

TEST_F(ReplacedFile, IsRefusedInAMissingFolder) {
  const std::string path = directory_.file("none/file");
  EXPECT_EQ("note " + path + ": cannot be written: No such file or directory", failureOf(path));
}

TEST_F(ReplacedFile, MayHaveAPathWithoutAFolder) {
  const std::filesystem::path before = std::filesystem::current_path();
  std::filesystem::current_path(directory_.path());
  replaceFile("note", "file", "new");
  std::filesystem::current_path(before);
  EXPECT_EQ("new", readFile(directory_.file("file")));
}

}  // namespace
