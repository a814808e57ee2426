#include "client/output/Progress.h"

#include <algorithm>
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
  const std::string rest(width_ > line.size() ? width_ - line.size() : 0, ' ');
  err_ << '\r' + line + rest << std::flush;
  width_ = std::max(width_, line.size());
}

}  // namespace topoctl
