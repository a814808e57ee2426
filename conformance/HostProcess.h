// The process of a host that topo-conformance has started.

#ifndef CONFORMANCE_HOSTPROCESS_H
#define CONFORMANCE_HOSTPROCESS_H

#include <sys/types.h>

#include <chrono>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "conformance/Descriptor.h"
#include "conformance/ErrorTail.h"

namespace conformance {

// The program does not exist or cannot be executed; what() has the reason. As std::runtime_error.
class NotExecuted : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// A running program with pipes to its standard input, output and error. The program leads a process
// group of its own. The destructor kills the group, and the kernel kills the program when
// topo-conformance dies.
//
// Thread-safety: none. Owns the process and its pipes. Errors: the constructor throws NotExecuted
// and std::system_error.
class HostProcess {
 public:
  using Milliseconds = std::chrono::milliseconds;

  // Entries NAME=VALUE replace or extend the environment. REQUIRES: the command is not empty.
  HostProcess(const std::vector<std::string>& command, const std::vector<std::string>& environment);
  ~HostProcess();

  HostProcess(const HostProcess&) = delete;
  HostProcess& operator=(const HostProcess&) = delete;

  pid_t pid() const { return pid_; }

  // The next line of standard output without the line feed. Empty after the timeout, also while the
  // program writes without pause, and at the end of the output. A line of more than 1 MiB is split.
  std::optional<std::string> readLine(Milliseconds timeout);

  // Writes to standard input. False when the host does not take the line within the timeout.
  bool writeLine(const std::string& line, Milliseconds timeout);

  void closeInput() { in_.reset(); }
  void send(int signal) const;

  // Whether the program has ended, or ends within the time.
  bool endsWithin(Milliseconds time);

  bool endedWell() const { return ended_ && status_ == 0; }

  // "it ended with status 1" or "signal 11 ended it", with ErrorTail::reason. REQUIRES: endsWithin
  // has returned true.
  std::string describeEnd();

 private:
  void start(const std::vector<std::string>& command, const std::vector<std::string>& environment);
  std::optional<std::string> takeLine();
  void kill();

  pid_t pid_ = -1;
  Descriptor in_;   // the end that this process writes
  Descriptor out_;  // the end that this process reads
  ErrorTail err_;
  std::string read_;  // of the output, not returned yet
  bool ended_ = false;
  int status_ = 0;  // as waitpid gives it
};

// The end of a message about a missing line: "; its last line was "TEXT"", or "" without a line.
// Thread-safety: any thread.
std::string describeLastLine(const std::string& line);

}  // namespace conformance

#endif
