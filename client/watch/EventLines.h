// Prints events and the state of the connection, one line each, as docs/topoctl.md describes them.

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

// Flushes after every line. Throws Failure (kLocal) when the stream fails.
//
// Thread-safety: none. Borrows the stream.
class EventLines {
 public:
  // The clock gives the time of lines without a time of the agent.
  // REQUIRES: the format is table or json.
  EventLines(std::ostream& out, Format format, Clock clock);

  void printEvent(const Event& event);
  void printWatching(std::size_t nodes);
  void printDisconnected(const std::string& reason);
  void printSilent(const std::string& reason);  // no notification will arrive

 private:
  void printReason(const char* kind, const std::string& reason);
  void write(const std::string& line);

  std::ostream& out_;
  const Format format_;
  const Clock clock_;
};

}  // namespace topoctl

#endif
