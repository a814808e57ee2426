// A line such as "3000 records" on a terminal.

#ifndef CLIENT_OUTPUT_PROGRESS_H
#define CLIENT_OUTPUT_PROGRESS_H

#include <cstddef>
#include <iosfwd>

namespace topoctl {

// Overwrites the line with each update, and erases the line at the end.
//
// Thread-safety: none. Borrows the stream. Failures of the stream are ignored.
class Progress {
 public:
  // Writes nothing unless the stream is a terminal.
  Progress(std::ostream& err, bool isTerminal);
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  void update(std::size_t records);

 private:
  std::ostream& err_;
  const bool isTerminal_;
  std::size_t width_ = 0;  // columns of the line
};

}  // namespace topoctl

#endif
