// A peer that speaks just enough GIOP to misbehave: objects of another process, without one.

#ifndef UNIT_AGENT_NOTIFICATIONS_WIREPEER_H
#define UNIT_AGENT_NOTIFICATIONS_WIREPEER_H

#include <cstdint>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "tests/unit/agent/notifications/Events.h"

namespace notification_tests {

// Listens on a free port of the loopback. Is every object and of every type; answers operations
// with nothing.
class WirePeer {
 public:
  enum class Act { kAnswer, kClose, kIgnore };

  // What it does to the first requests of the operation; all others are answered.
  WirePeer(std::string operation, std::vector<Act> acts);
  ~WirePeer();

  WirePeer(const WirePeer&) = delete;
  WirePeer& operator=(const WirePeer&) = delete;

  // Of an object there.
  std::string reference() const;
  std::uint16_t port() const { return port_; }

  // The requests of the operation: "answered", "closed" or "ignored".
  Record& requests() { return requests_; }

 private:
  void run();
  bool serve(int connection);
  Act actOn(const std::string& message);

  const std::string operation_;
  std::vector<Act> acts_;  // of the thread
  Record requests_;
  int listener_ = -1;
  int wake_[2] = {-1, -1};
  std::uint16_t port_ = 0;
  std::thread thread_;
};

// A port of the loopback at which nobody listens.
std::uint16_t deafPort();

}  // namespace notification_tests

#endif
