// "3000 records" on a terminal, written over itself and gone at the end.

#ifndef CLIENT_OUTPUT_PROGRESS_H
#define CLIENT_OUTPUT_PROGRESS_H

#include <cstddef>
#include <iosfwd>

namespace topoctl {

class Progress {
 public:
  // Borrows the stream. Writes nothing when it is not a terminal.
  Progress(std::ostream& err, bool isTerminal);
  ~Progress();
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  void show(std::size_t records);

 private:
  std::ostream& err_;
  const bool isTerminal_;
  std::size_t width_ = 0;  // columns that are written on
};

}  // namespace topoctl

#endif
