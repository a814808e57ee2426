#include "tests/support/Process.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <stdexcept>

namespace support {
namespace {

std::vector<char*> pointers(std::vector<std::string>& texts) {
  std::vector<char*> result;
  for (std::string& text : texts) {
    result.push_back(text.data());
  }
  result.push_back(nullptr);
  return result;
}

std::vector<std::string> environmentWith(const std::vector<std::string>& additions) {
  std::vector<std::string> all;
  for (char** entry = environ; *entry != nullptr; ++entry) {
    const std::string text = *entry;
    bool replaced = false;
    for (const std::string& addition : additions) {
      replaced =
          replaced || text.compare(0, text.find('=') + 1, addition, 0, addition.find('=') + 1) == 0;
    }
    if (!replaced) {
      all.push_back(text);
    }
  }
  all.insert(all.end(), additions.begin(), additions.end());
  return all;
}

std::string rest(std::FILE* file) {
  std::string text;
  std::array<char, 4096> part;
  while (const std::size_t size = std::fread(part.data(), 1, part.size(), file)) {
    text.append(part.data(), size);
  }
  return text;
}

// Between fork and exec: async-signal-safe functions only.
[[noreturn]] void become(const char* program, char* const* arguments, char* const* environment,
                         int in, int out, int err, pid_t parent) {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (getppid() != parent) {
    _exit(127);
  }
  dup2(in, STDIN_FILENO);
  dup2(out, STDOUT_FILENO);
  dup2(err, STDERR_FILENO);
  sigset_t none;
  sigemptyset(&none);
  sigprocmask(SIG_SETMASK, &none, nullptr);
  execve(program, arguments, environment);
  _exit(127);
}

}  // namespace

Process::Process(const std::string& program, const std::vector<std::string>& arguments,
                 const std::vector<std::string>& environment, Input input)
    : in_(nullptr, std::fclose), out_(nullptr, std::fclose), err_(std::tmpfile(), std::fclose) {
  std::vector<std::string> all = {program};
  all.insert(all.end(), arguments.begin(), arguments.end());
  std::vector<std::string> variables = environmentWith(environment);
  const std::vector<char*> argumentPointers = pointers(all);
  const std::vector<char*> variablePointers = pointers(variables);
  std::array<int, 2> ends{};
  std::array<int, 2> inputEnds{STDIN_FILENO, -1};
  if (!err_ || pipe2(ends.data(), O_CLOEXEC) != 0 ||
      (input == Input::kPipe && pipe2(inputEnds.data(), O_CLOEXEC) != 0)) {
    throw std::runtime_error("no pipe for " + program);
  }
  const pid_t parent = getpid();
  pid_ = fork();
  if (pid_ == 0) {
    become(program.c_str(), argumentPointers.data(), variablePointers.data(), inputEnds[0], ends[1],
           fileno(err_.get()), parent);
  }
  close(ends[1]);
  out_.reset(fdopen(ends[0], "r"));
  if (input == Input::kPipe) {
    close(inputEnds[0]);
    in_.reset(fdopen(inputEnds[1], "w"));
  }
  if (pid_ < 0) {
    throw std::runtime_error("cannot start " + program);
  }
}

Process::~Process() {
  if (!ended_) {
    send(SIGKILL);
    waitpid(pid_, nullptr, 0);
  }
}

std::string Process::readLine() {
  std::string line;
  int c = 0;
  while ((c = std::fgetc(out_.get())) != EOF && c != '\n') {
    line.push_back(static_cast<char>(c));
  }
  return line;
}

void Process::writeLine(const std::string& line) {
  std::fputs((line + "\n").c_str(), in_.get());
  std::fflush(in_.get());
}

void Process::closeInput() {
  in_.reset();
}

void Process::closeOutput() {
  out_.reset();
}

void Process::send(int signal) {
  kill(pid_, signal);
}

Ended Process::wait() {
  Ended result;
  if (out_) {
    result.out = rest(out_.get());
  }
  int status = 0;
  if (waitpid(pid_, &status, 0) != pid_) {
    throw std::runtime_error("the program is lost");
  }
  ended_ = true;
  result.status = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  result.signal = WIFSIGNALED(status) ? WTERMSIG(status) : 0;
  std::rewind(err_.get());
  result.err = rest(err_.get());
  return result;
}

Ended run(const std::string& program, const std::vector<std::string>& arguments,
          const std::vector<std::string>& environment) {
  return Process(program, arguments, environment).wait();
}

}  // namespace support
