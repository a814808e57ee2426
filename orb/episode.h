// Rate limit for log lines about what clients can cause as often as they like.

#ifndef ORB_EPISODE_H
#define ORB_EPISODE_H

#include <chrono>
#include <cstddef>
#include <optional>

namespace orb {

// Groups events of one kind into episodes, so that each episode takes two log lines: one at its
// first event, one with the number of events when it is over. An episode is over when no event
// happened for a while.
//
// Thread-safety: none.
class Episode {
 public:
  using Time = std::chrono::steady_clock::time_point;

  static constexpr std::chrono::seconds kDefaultQuiet{10};

  explicit Episode(std::chrono::milliseconds quiet = kDefaultQuiet) : quiet_(quiet) {}

  // Counts an event. Returns whether the event begins an episode.
  bool happened(Time now);

  // The number of events of an episode that is over by now; a value once per episode.
  std::optional<std::size_t> over(Time now);

  // When over() can have a value at the earliest; no value outside of an episode.
  std::optional<Time> end() const;

 private:
  const std::chrono::milliseconds quiet_;
  std::size_t events_ = 0;  // of the present episode; 0: there is none
  Time last_;
};

}  // namespace orb

#endif
