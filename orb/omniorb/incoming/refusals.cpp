#include "refusals.h"

#include "../log.h"

namespace orb {

void Refusals::add(const std::string& line, Episode::Time now) {
  if (episode_.happened(now)) {
    writeLog(line);
  }
}

void Refusals::endBy(Episode::Time now) {
  if (const std::optional<std::size_t> count = episode_.over(now)) {
    writeLog(std::to_string(*count) + overText_);
  }
}

}  // namespace orb
