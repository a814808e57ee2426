// Runs programs.

#ifndef TESTS_SUPPORT_PROCESS_H
#define TESTS_SUPPORT_PROCESS_H

#include <sys/types.h>

#include <cstdio>
#include <memory>
#include <string>
#include <vector>

namespace support {

struct Ended {
  int status = -1;  // the exit status; -1 when a signal ended the program
  int signal = 0;   // the signal that ended the program, or 0
  std::string out;
  std::string err;
};

// A running program. The destructor kills the program, and the kernel does when the test process
// dies. Thread-safety: none. Owns the program and its pipes. Errors: the functions throw
// std::runtime_error.
class Process {
 public:
  enum class Input { kOfTheTest, kPipe };  // standard input

  // Starts the program. Adds NAME=VALUE entries to the environment of the test.
  Process(const std::string& program, const std::vector<std::string>& arguments,
          const std::vector<std::string>& environment = {}, Input input = Input::kOfTheTest);
  ~Process();

  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;

  pid_t pid() const { return pid_; }

  // The next line of standard output, without the line feed; "" at the end of the output.
  // REQUIRES: closeOutput has not been called.
  std::string readLine();

  // REQUIRES: Input::kPipe.
  void writeLine(const std::string& line);
  void closeInput();

  void closeOutput();  // the program's next write fails with EPIPE

  void send(int signal);

  // Waits for the end of the program. Ended::out is the output that readLine has not returned; ""
  // after closeOutput.
  Ended wait();

 private:
  using File = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

  pid_t pid_ = -1;
  bool ended_ = false;
  File in_;  // null without a pipe
  File out_;
  File err_;
};

// Runs a program to its end.
Ended run(const std::string& program, const std::vector<std::string>& arguments,
          const std::vector<std::string>& environment = {});

}  // namespace support

#endif
