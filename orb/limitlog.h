// Log lines about clients that exceed a limit of the server.

#ifndef ORB_LIMITLOG_H
#define ORB_LIMITLOG_H

#include <array>
#include <cstddef>
#include <optional>
#include <string>

#include "episode.h"
#include "orb/orb.h"
#include "sync/Mutex.h"

namespace orb {

// Logs refused connections, requests over their size limit, connections that were closed because of
// an incomplete request, and failed TLS handshakes. Each kind has an Episode, so that a flood of
// refusals takes two lines. A line is dropped when its allocation fails.
//
// Thread-safety: any thread. Owns the log function, which runs without the mutex.
// Errors: exceptions of the log function pass, except std::bad_alloc for the first line of an
// episode.
class LimitLog {
 public:
  using Time = Episode::Time;

  // Null: nothing is logged.
  explicit LimitLog(LogFunction log);

  // The arguments are the limit, or the number of open connections.
  void tooManyConnections(std::size_t limit, Time now);
  void outOfDescriptors(std::size_t open, Time now);
  void outOfMemory(Time now);

  void requestTooLarge(const std::string& operation, std::size_t bytes, const std::string& peer,
                       Time now);
  void requestIncomplete(Time now);

  // A TLS handshake failed; reason: a clause.
  void handshakeFailed(const std::string& peer, const std::string& reason, Time now);

  // Logs the number of refusals of each episode that is over by now.
  void endEpisodes(Time now);

  // The earliest time at which endEpisodes() has something to log; no value outside of episodes.
  std::optional<Time> nextEnd() const;

 private:
  enum Kind { kConnections, kRequests, kIncomplete, kHandshakes, kKinds };

  template <typename MakeLine>
  void add(Kind kind, Time now, MakeLine makeLine);

  const LogFunction log_;
  mutable Mutex mutex_;
  std::array<Episode, kKinds> episodes_ GUARDED_BY(mutex_);  // by Kind
};

}  // namespace orb

#endif
