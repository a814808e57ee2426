// The ORB's interface to a channel.

#ifndef ORB_OMNIORB_INCOMING_CONNECTION_H
#define ORB_OMNIORB_INCOMING_CONNECTION_H

#include <omniORB4/CORBA.h>
// The ORB's internal headers do not include each other, so their order is fixed.
// clang-format off
#include <omniORB4/giopEndpoint.h>
// clang-format on

#include <functional>
#include <memory>

#include "channel.h"

namespace orb {

// An incoming connection: reads complete requests from a Channel and writes to its socket.
//
// Ownership: the ORB deletes the object at the end of the connection. Thread-safety: any thread, as
// far as the ORB's interface allows. Errors are returned as -1, timeouts as 0.
class Connection final : public omni::giopConnection {
 public:
  // The destructor calls `released`, whose captures keep alive the objects that the channel
  // borrows.
  // type: "giop:tcp", for the ORB's messages and rules.
  Connection(std::shared_ptr<Channel> channel, const char* type, std::function<void()> released);

  // Waits for space in the socket buffer until the deadline. CloseConnection messages do not wait,
  // because the ORB sends them under its locks.
  int Send(void* bytes, std::size_t count, const omni_time_t& deadline) override;
  int Recv(void* bytes, std::size_t count, const omni_time_t& deadline) override;
  void Shutdown() override;
  const char* myaddress() override;
  const char* peeraddress() override;
  void setSelectable(int now, _CORBA_Boolean dataInBuffer) override;
  void clearSelectable() override;
  _CORBA_Boolean isSelectable() override;
  _CORBA_Boolean Peek() override;

  // REQUIRES: a request was received.
  const Peer& peer() const { return channel_->stream().peer(); }

  // Whether the request in dispatch was refused for its size.
  bool isRefused() const { return channel_->isRefused(); }

 private:
  ~Connection() override;

  const std::function<void()> released_;
  const std::shared_ptr<Channel> channel_;
  const CORBA::String_var myAddress_;
  const CORBA::String_var peerAddress_;
};

}  // namespace orb

#endif
