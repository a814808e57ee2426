// Events and what is said about their arrival, as one line each; docs/topoctl.md describes them.

#ifndef CLIENT_WATCH_EVENTLINES_H
#define CLIENT_WATCH_EVENTLINES_H

#include <chrono>
#include <cstddef>
#include <functional>
#include <iosfwd>
#include <string>

#include "client/output/Format.h"
#include "client/watch/Event.h"

namespace topoctl {

using TimePoint = std::chrono::system_clock::time_point;
using Clock = std::function<TimePoint()>;

// Writes each line at once. Throws Failure (kLocal) when it cannot. The clock is for lines without
// a time of the agent.
class EventLines {
 public:
  // Borrows the stream. REQUIRES: the format is table or json.
  EventLines(std::ostream& out, Format format, Clock clock);

  void tell(const Event& event);
  void tellWatching(std::size_t nodes);
  void tellDisconnected(const std::string& reason);

 private:
  void write(const std::string& line);

  std::ostream& out_;
  const Format format_;
  const Clock clock_;
};

}  // namespace topoctl

#endif
