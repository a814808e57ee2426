// Rate limit for log lines about events that clients can cause at any rate.

#ifndef ORB_EPISODE_H
#define ORB_EPISODE_H

#include <chrono>
#include <cstddef>
#include <optional>

namespace orb {

// Groups events of one kind into episodes, so that an episode takes two log lines: a line at the
// first event and a line with the number of events at the end. An episode ends after a quiet period
// without events.
//
// Thread-safety: none. Owns numbers only. No function fails.
class Episode {
 public:
  using Time = std::chrono::steady_clock::time_point;

  static constexpr std::chrono::seconds kDefaultQuiet{10};

  explicit Episode(std::chrono::milliseconds quiet = kDefaultQuiet) : quiet_(quiet) {}

  // Counts an event. Returns whether the event begins an episode.
  bool add(Time now);

  // If the quiet period has passed, ends the episode and returns its number of events.
  std::optional<std::size_t> finish(Time now);

  // The earliest time at which finish() returns a number; no value outside of an episode.
  std::optional<Time> end() const;

 private:
  const std::chrono::milliseconds quiet_;
  std::size_t events_ = 0;  // of the current episode; 0: no episode
  Time last_;               // time of the last event
};

}  // namespace orb

#endif
