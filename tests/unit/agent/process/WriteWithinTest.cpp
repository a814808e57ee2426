// writeWithin on full pipes, slow and closed readers, and files.

#include "agent/process/WriteWithin.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <cstddef>
#include <string>
#include <thread>

#include "tests/support/FullPipe.h"
#include "tests/support/TemporaryDirectory.h"

namespace {

using agent::kNoLimit;
using agent::writeWithin;
using std::chrono::milliseconds;

TEST(WriteWithin, FailsWhenAPipeStaysFull) {
  const support::FullPipe pipe;
  EXPECT_FALSE(writeWithin(pipe.writer(), "text", milliseconds(0)));
  EXPECT_FALSE(writeWithin(pipe.writer(), "text", milliseconds(1)));
}

TEST(WriteWithin, FailsWhenANonblockingPipeStaysFull) {
  const support::FullPipe pipe;
  ::fcntl(pipe.writer(), F_SETFL, O_NONBLOCK);
  EXPECT_FALSE(writeWithin(pipe.writer(), "text", milliseconds(1)));
}

TEST(WriteWithin, WritesTheWholeTextToASlowReader) {
  const support::FullPipe pipe;
  const int size = ::fcntl(pipe.writer(), F_GETPIPE_SZ);
  ::fcntl(pipe.writer(), F_SETFL, O_NONBLOCK);
  const std::string text(static_cast<std::size_t>(size) * 3, 'y');
  std::string read;
  std::thread reader([&] {
    std::array<char, 5000> part{};
    while (read.size() < static_cast<std::size_t>(size) + text.size()) {
      const ssize_t count = ::read(pipe.reader(), part.data(), part.size());
      read.append(part.data(), static_cast<std::size_t>(count));
    }
  });
  EXPECT_TRUE(writeWithin(pipe.writer(), text, kNoLimit));
  reader.join();
  EXPECT_EQ(text, read.substr(read.size() - text.size()));
}

TEST(WriteWithin, FailsWithoutAReader) {
  std::signal(SIGPIPE, SIG_IGN);
  std::array<int, 2> ends{};
  ASSERT_EQ(0, ::pipe(ends.data()));
  ::close(ends[0]);
  EXPECT_FALSE(writeWithin(ends[1], "text", kNoLimit));
  ::close(ends[1]);
}

TEST(WriteWithin, WritesToAFile) {
  const support::TemporaryDirectory directory;
  const std::string path = directory.write("file", "");
  const int file = ::open(path.c_str(), O_WRONLY | O_CLOEXEC);
  EXPECT_TRUE(writeWithin(file, "", kNoLimit));
  EXPECT_TRUE(writeWithin(file, "text", milliseconds(0)));
  ::close(file);
  EXPECT_EQ("text", support::readFile(path));
}

}  // namespace
