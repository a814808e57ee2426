#include "episode.h"

#include <utility>

namespace orb {

bool Episode::add(Time now) {
  last_ = now;
  return events_++ == 0;
}

std::optional<std::size_t> Episode::finish(Time now) {
  if (events_ == 0 || now < last_ + quiet_) {
    return std::nullopt;
  }
  return std::exchange(events_, 0);
}

std::optional<Episode::Time> Episode::end() const {
  return events_ == 0 ? std::nullopt : std::optional(last_ + quiet_);
}

}  // namespace orb
