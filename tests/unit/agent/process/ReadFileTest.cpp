#include "agent/process/ReadFile.h"

#include <gtest/gtest.h>

#include "tests/support/TemporaryDirectory.h"

namespace agent {
namespace {

constexpr std::size_t kMebibyte = std::size_t{1} << 20;

std::string problemWith(const std::string& file) {
  try {
    readFile(file, kMebibyte);
  } catch (const FileError& failure) {
    return failure.what();
  }
  return "";
}

TEST(ReadFile, ReturnsTheContent) {
  const support::TemporaryDirectory directory;
  const std::string content("a\n\0b", 4);
  EXPECT_EQ(content, readFile(directory.write("file", content), kMebibyte));
  EXPECT_EQ("", readFile(directory.write("empty", ""), kMebibyte));
}

TEST(ReadFile, RejectsAFileOverTheLimit) {
  const support::TemporaryDirectory directory;
  const std::string file = directory.write("file", std::string(kMebibyte, 'x'));
  EXPECT_EQ("", problemWith(file));
  directory.write("file", std::string(kMebibyte + 1, 'x'));
  EXPECT_EQ(file + ": is larger than 1 MiB", problemWith(file));
}

TEST(ReadFile, NamesTheReasonOfAFailure) {
  const support::TemporaryDirectory directory;
  EXPECT_EQ(directory.file("none") + ": No such file or directory",
            problemWith(directory.file("none")));
  EXPECT_EQ(directory.path().string() + ": is a directory", problemWith(directory.path()));
}

}  // namespace
}  // namespace agent
