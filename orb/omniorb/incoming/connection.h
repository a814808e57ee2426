// The ORB's view of an incoming connection.

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

// Owned by the ORB, which deletes it when the connection is at its end.
class Connection final : public omni::giopConnection {
 public:
  // `released` is called by the destructor, and keeps alive what the channel refers to.
  Connection(std::shared_ptr<Channel> channel, std::function<void()> released);

  // Waits for room in the buffers of the connection no longer than until the deadline, and not at
  // all to say goodbye: the ORB does that with its locks held.
  int Send(void* bytes, std::size_t count, const omni_time_t& deadline) override;
  int Recv(void* bytes, std::size_t count, const omni_time_t& deadline) override;
  void Shutdown() override;
  const char* myaddress() override;
  const char* peeraddress() override;
  void setSelectable(int now, _CORBA_Boolean dataInBuffer) override;
  void clearSelectable() override;
  _CORBA_Boolean isSelectable() override;
  _CORBA_Boolean Peek() override;

  // Whether the request that is being dispatched was refused for its size.
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
