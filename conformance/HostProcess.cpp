#include "conformance/HostProcess.h"

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
  int result;  // gets the errno of a failed exec; closed by a successful one
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
  const int reason = errno;
  [[maybe_unused]] const ssize_t written = write(image.result, &reason, sizeof reason);
  _exit(127);
}

// Waits for the exec of the child. Returns its errno, or 0 after a success.
int resultOfExec(int descriptor) {
  int reason = 0;
  ssize_t count = -1;
  do {
    count = read(descriptor, &reason, sizeof reason);
  } while (count < 0 && errno == EINTR);
  return count == sizeof reason ? reason : 0;
}

// A script whose interpreter is missing fails as a missing program does.
std::string describeExecFailure(const std::string& program, int reason) {
  const bool hasFile = program.find('/') != std::string::npos && access(program.c_str(), F_OK) == 0;
  if (reason == ENOENT && !hasFile) {
    return "the program " + program + " does not exist";
  }
  return "the program " + program + " cannot be executed: " +
         (reason == ENOENT ? "its interpreter does not exist"
                           : std::generic_category().message(reason));
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

HostProcess::HostProcess(const std::vector<std::string>& command,
                         const std::vector<std::string>& environment) {
  start(command, environment);
}

void HostProcess::start(const std::vector<std::string>& command,
                        const std::vector<std::string>& environment) {
  std::vector<std::string> arguments = command;
  std::vector<std::string> variables = environmentWith(environment);
  const std::vector<char*> argumentPointers = pointers(arguments);
  const std::vector<char*> variablePointers = pointers(variables);
  Pipe in("a pipe to the host");
  Pipe out("a pipe from the host");
  Pipe result("a pipe for the result of the start");
  const Image image = {
      argumentPointers.data(), variablePointers.data(), in.read.get(), out.write.get(),
      err_.writeEnd(),         result.write.get(),      getpid()};
  pid_ = fork();
  if (pid_ == 0) {
    become(image);
  }
  if (pid_ < 0) {
    fail("a process for the host");
  }
  setpgid(pid_, pid_);  // also here, so that a kill of the group never comes too early
  in_.reset(in.write.release());
  out_.reset(out.read.release());
  err_.closeWriteEnd();
  result.write.reset();
  if (const int reason = resultOfExec(result.read.get()); reason != 0) {
    kill();
    throw NotExecuted(describeExecFailure(command.front(), reason));
  }
}

HostProcess::~HostProcess() {
  kill();
}

void HostProcess::kill() {
  ::kill(-pid_, SIGKILL);
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
    ::kill(pid_, signal);
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

std::string describeLastLine(const std::string& line) {
  return line.empty() ? "" : "; its last line was \"" + line.substr(0, 200) + '"';
}

std::string HostProcess::describeEnd() {
  const std::string line = err_.reason();
  const std::string how = WIFSIGNALED(status_)
                              ? "signal " + std::to_string(WTERMSIG(status_)) + " ended it"
                              : "it ended with status " + std::to_string(WEXITSTATUS(status_));
  return line.empty() ? how : how + ", from its standard error: " + line;
}

}  // namespace conformance
