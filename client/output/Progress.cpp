#include "client/output/Progress.h"

#include <ostream>
#include <string>

namespace topoctl {

Progress::Progress(std::ostream& err, bool isTerminal) : err_(err), isTerminal_(isTerminal) {}

Progress::~Progress() {
  if (width_ > 0) {
    err_ << '\r' + std::string(width_, ' ') + '\r' << std::flush;
  }
}

void Progress::update(std::size_t records) {
  if (!isTerminal_) {
    return;
  }
  const std::string line = " " + std::to_string(records) + " records";
  err_ << '\r' + line << std::flush;
  width_ = line.size();
}

}  // namespace topoctl
