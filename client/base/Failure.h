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
  kUnreachable = 2,     // the agent, or the naming service of a corbaname
  kRefused = 3,         // the agent raised a ProcessingFailureException or NO_PERMISSION
  kCallFailed = 4,      // any other CORBA failure
  kLocal = 5,           // a failure of this process: output, memory, listening
  kOutputClosed = 141,  // nobody reads the output any more; as shells report SIGPIPE
};

// Ends a run of topoctl with an exit code and a text. The text may contain bytes from the network;
// report() makes them safe for a terminal.
//
// Thread-safety: as std::runtime_error. Owns its text. Construction throws std::bad_alloc.
class Failure : public std::runtime_error {
 public:
  Failure(ExitCode code, const std::string& text) : std::runtime_error(text), code_(code) {}

  ExitCode code() const { return code_; }

 private:
  ExitCode code_;
};

// Writes "topoctl: " and the text as one line, with control characters escaped; writes nothing for
// kOutputClosed, because programs in a pipe end silently when the reader has ended. Returns the
// exit code.
int report(const Failure& failure, std::ostream& err);

}  // namespace topoctl

#endif
