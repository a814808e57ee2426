#include "conformance/HostProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <system_error>
#include <thread>
#include <utility>

namespace conformance {
namespace {

using Clock = std::chrono::steady_clock;
using Milliseconds = HostProcess::Milliseconds;

constexpr Milliseconds kPollInterval{10};

constexpr std::size_t kLongestLine = 1 << 20;  // longer lines are split
constexpr long kLongestErrorLine = 64 << 10;   // of the standard error, the begin is cut

[[noreturn]] void fail(const char* what) {
  throw std::system_error(errno, std::generic_category(), what);
}

std::vector<char*> pointers(std::vector<std::string>& texts) {
  std::vector<char*> result;
  result.reserve(texts.size() + 1);
  for (std::string& text : texts) {
    result.push_back(text.data());
  }
  result.push_back(nullptr);
  return result;
}

bool isSameVariable(const std::string& a, const std::string& b) {
  return a.compare(0, a.find('=') + 1, b, 0, b.find('=') + 1) == 0;
}

std::vector<std::string> environmentWith(const std::vector<std::string>& additions) {
  std::vector<std::string> all = additions;
  for (char** entry = environ; *entry != nullptr; ++entry) {
    bool isReplaced = false;
    for (const std::string& addition : additions) {
      isReplaced = isReplaced || isSameVariable(*entry, addition);
    }
    if (!isReplaced) {
      all.emplace_back(*entry);
    }
  }
  return all;
}

// The data of the child after the fork. The child must not allocate memory.
struct Image {
  char* const* arguments;
  char* const* environment;
  int in;
  int out;
  int err;
  pid_t parent;
};

[[noreturn]] void become(const Image& image) {
  setpgid(0, 0);
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (getppid() != image.parent) {
    _exit(127);
  }
  dup2(image.in, STDIN_FILENO);
  dup2(image.out, STDOUT_FILENO);
  dup2(image.err, STDERR_FILENO);
  std::signal(SIGPIPE, SIG_DFL);
  sigset_t none;
  sigemptyset(&none);
  sigprocmask(SIG_SETMASK, &none, nullptr);
  execvpe(image.arguments[0], image.arguments, image.environment);
  _exit(127);
}

// Whether the descriptor is ready before the deadline.
bool waitFor(int descriptor, short events, Clock::time_point deadline) {
  for (;;) {
    const auto rest = std::chrono::duration_cast<Milliseconds>(deadline - Clock::now());
    pollfd entry = {descriptor, events, 0};
    const int ready = poll(&entry, 1, rest.count() > 0 ? static_cast<int>(rest.count()) : 0);
    if (ready > 0) {
      return true;
    }
    if (ready == 0 || errno != EINTR) {
      return false;
    }
  }
}

}  // namespace

void HostProcess::Descriptor::reset(int value) {
  if (value_ >= 0) {
    close(value_);
  }
  value_ = value;
}

HostProcess::HostProcess(const std::vector<std::string>& command,
                         const std::vector<std::string>& environment)
    : err_(std::tmpfile(), std::fclose) {
  if (!err_) {
    fail("a temporary file for the standard error of the host");
  }
  start(command, environment);
}

void HostProcess::start(const std::vector<std::string>& command,
                        const std::vector<std::string>& environment) {
  std::vector<std::string> arguments = command;
  std::vector<std::string> variables = environmentWith(environment);
  const std::vector<char*> argumentPointers = pointers(arguments);
  const std::vector<char*> variablePointers = pointers(variables);
  std::array<int, 2> in{};
  std::array<int, 2> out{};
  if (pipe2(in.data(), O_CLOEXEC) != 0) {
    fail("a pipe to the host");
  }
  const Descriptor readEnd(in[0]);
  in_.reset(in[1]);
  if (pipe2(out.data(), O_CLOEXEC) != 0) {
    fail("a pipe from the host");
  }
  out_.reset(out[0]);
  const Descriptor writeEnd(out[1]);
  const Image image = {argumentPointers.data(), variablePointers.data(), readEnd.get(),
                       writeEnd.get(),          fileno(err_.get()),      getpid()};
  pid_ = fork();
  if (pid_ == 0) {
    become(image);
  }
  if (pid_ < 0) {
    fail("a process for the host");
  }
  setpgid(pid_, pid_);  // also here, so that a kill of the group never comes too early
}

HostProcess::~HostProcess() {
  kill(-pid_, SIGKILL);
  if (!ended_) {
    waitpid(pid_, nullptr, 0);
  }
}

std::optional<std::string> HostProcess::takeLine() {
  const std::size_t end = read_.find('\n');
  if (end == std::string::npos && read_.size() < kLongestLine) {
    return std::nullopt;
  }
  if (end == std::string::npos) {
    return std::exchange(read_, {});
  }
  std::string line = read_.substr(0, end);
  read_.erase(0, end + 1);
  return line;
}

std::optional<std::string> HostProcess::readLine(Milliseconds timeout) {
  const auto deadline = Clock::now() + timeout;
  while (Clock::now() < deadline) {
    if (auto line = takeLine()) {
      return line;
    }
    std::array<char, 4096> part;
    if (!waitFor(out_.get(), POLLIN, deadline)) {
      return std::nullopt;
    }
    const ssize_t count = read(out_.get(), part.data(), part.size());
    if (count <= 0) {
      return std::nullopt;
    }
    read_.append(part.data(), static_cast<std::size_t>(count));
  }
  return std::nullopt;
}

bool HostProcess::writeLine(const std::string& line, Milliseconds timeout) {
  // A pipe that polls as writable takes PIPE_BUF bytes; requests are shorter.
  const std::string bytes = line + '\n';
  return in_.get() >= 0 && waitFor(in_.get(), POLLOUT, Clock::now() + timeout) &&
         write(in_.get(), bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size());
}

void HostProcess::send(int signal) const {
  if (!ended_) {
    kill(pid_, signal);
  }
}

bool HostProcess::endsWithin(Milliseconds time) {
  const auto deadline = Clock::now() + time;
  while (!ended_) {
    if (waitpid(pid_, &status_, WNOHANG) == pid_) {
      ended_ = true;
    } else if (Clock::now() >= deadline) {
      return false;
    } else {
      std::this_thread::sleep_for(kPollInterval);
    }
  }
  return true;
}

std::string HostProcess::lastErrorLine() const {
  std::string last;
  std::string line;
  if (std::fseek(err_.get(), -kLongestErrorLine, SEEK_END) != 0) {
    std::rewind(err_.get());
  }
  for (int c = std::fgetc(err_.get()); c != EOF; c = std::fgetc(err_.get())) {
    if (c != '\n') {
      line.push_back(static_cast<char>(c));
    } else {
      last = line.empty() ? last : line;
      line.clear();
    }
  }
  return line.empty() ? last : line;
}

std::string describeLastLine(const std::string& line) {
  return line.empty() ? "" : "; its last line was \"" + line.substr(0, 200) + '"';
}

std::string HostProcess::describeEnd() const {
  const std::string line = lastErrorLine();
  const std::string how = WIFSIGNALED(status_)
                              ? "signal " + std::to_string(WTERMSIG(status_)) + " ended it"
                              : "it ended with status " + std::to_string(WEXITSTATUS(status_));
  return line.empty() ? how : how + ", last line of its standard error: " + line;
}

}  // namespace conformance
