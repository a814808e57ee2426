// Real programs under test.

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
  int signal = 0;   // the signal that ended it, or 0
  std::string out;
  std::string err;
};

// One running program. It is killed when this goes, and with the test process if that dies first.
//
// Thread-safety: none.
class Process {
 public:
  // Starts it. NAME=VALUE in the environment is set on top of the test's own.
  Process(const std::string& program, const std::vector<std::string>& arguments,
          const std::vector<std::string>& environment = {});
  ~Process();

  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;

  pid_t pid() const { return pid_; }

  // The next line of its standard output without the line feed; empty at the end of the output.
  // REQUIRES: the output is not closed.
  std::string readLine();

  void closeOutput();  // the program's next write fails with EPIPE

  void send(int signal);

  // Waits for its end. out has what readLine has not taken, nothing if the output was closed.
  Ended wait();

 private:
  using File = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

  pid_t pid_ = -1;
  bool ended_ = false;
  File out_;
  File err_;
};

// Runs a program to its end.
Ended run(const std::string& program, const std::vector<std::string>& arguments,
          const std::vector<std::string>& environment = {});

}  // namespace support

#endif
