// The failures of a run of topoctl, each with an exit code and one line of text.

#ifndef CLIENT_BASE_FAILURE_H
#define CLIENT_BASE_FAILURE_H

#include <iosfwd>
#include <stdexcept>
#include <string>

namespace topoctl {

enum class ExitCode {
  kDone = 0,
  kUsage = 1,
  kUnreachable = 2,  // the agent, or the naming service on the way to it
  kRefused = 3,      // the agent answered with an exception of its own
  kCallFailed = 4,   // any other CORBA failure
  kLocal = 5,        // this process: its output, its memory
};

class Failure : public std::runtime_error {
 public:
  Failure(ExitCode code, const std::string& text) : std::runtime_error(text), code_(code) {}

  ExitCode code() const { return code_; }

 private:
  ExitCode code_;
};

// Writes "topoctl: ..." as one line, whatever the failure's text holds, and returns the exit code.
int report(const Failure& failure, std::ostream& err);

}  // namespace topoctl

#endif
