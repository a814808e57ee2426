// A GIOP peer on a socket that answers, ignores or closes on request.

#ifndef UNIT_AGENT_NOTIFICATIONS_WIREPEER_H
#define UNIT_AGENT_NOTIFICATIONS_WIREPEER_H

#include <cstdint>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "tests/unit/agent/notifications/Events.h"

namespace notification_tests {

// Listens on a free port of the loopback. Every object key and type exists; every operation returns
// an empty result. Thread-safety: any thread.
class WirePeer {
 public:
  enum class Act { kAnswer, kClose, kIgnore };
  using Acts = std::vector<Act>;

  // acts: for the first requests of the operation. Answers all other requests.
  WirePeer(std::string operation, std::vector<Act> acts);
  ~WirePeer();

  WirePeer(const WirePeer&) = delete;
  WirePeer& operator=(const WirePeer&) = delete;

  // A reference to an object of the peer.
  std::string reference() const;
  std::uint16_t port() const { return port_; }

  // An entry for each request of the operation.
  Record<Act>& requests() { return requests_; }

 private:
  void run();
  bool serve(int connection);
  Act actOn(const std::string& message);

  const std::string operation_;
  std::vector<Act> acts_;  // used by the thread only
  Record<Act> requests_;
  int listener_ = -1;
  int wake_[2] = {-1, -1};
  std::uint16_t port_ = 0;
  std::thread thread_;
};

// A port of the loopback without a listener.
std::uint16_t closedPort();

}  // namespace notification_tests

#endif
