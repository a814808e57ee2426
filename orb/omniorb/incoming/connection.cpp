#include "connection.h"

#include <poll.h>
// The ORB's internal headers do not include each other, so their order is fixed.
// clang-format off
#include <omniORB4/CORBA.h>
#include <omniORB4/internal/giopStrand.h>
#include <omniORB4/internal/giopStream.h>
#include <omniORB4/internal/GIOP_S.h>
// clang-format on

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <climits>
#include <cstddef>
#include <optional>
#include <string>

#include "../../addresses.h"
#include "../../incoming/giop.h"
#include "../strands.h"

namespace orb {
namespace {

using SystemTime = std::chrono::system_clock::time_point;

std::optional<SystemTime> timeOf(const omni_time_t& deadline) {
  if (!deadline) {
    return std::nullopt;
  }
  return SystemTime(std::chrono::duration_cast<SystemTime::duration>(
      std::chrono::seconds(deadline.s) + std::chrono::nanoseconds(deadline.ns)));
}

// An address in the ORB's notation. A client on a Unix socket has no address of its own.
char* uri(const char* type, const Endpoint& own, const Endpoint& address) {
  const std::string text = own.transport == Transport::kUnix ? own.host : format(address);
  return CORBA::string_dup((std::string(type) + ":" + text).c_str());
}

bool isCloseConnection(const void* bytes, std::size_t count) {
  constexpr std::size_t kTypeOffset = 7;
  return count == giop::kHeaderBytes && static_cast<const char*>(bytes)[kTypeOffset] ==
                                            static_cast<char>(giop::Type::kCloseConnection);
}

// Returns false if the socket is not writable before the deadline.
bool waitForRoom(int socket, const std::optional<SystemTime>& deadline) {
  using std::chrono::milliseconds;
  for (;;) {
    int patience = -1;
    if (deadline) {
      const auto left = std::chrono::ceil<milliseconds>(*deadline - SystemTime::clock::now());
      patience = static_cast<int>(std::clamp<milliseconds::rep>(left.count(), 0, INT_MAX));
    }
    pollfd wait{socket, POLLOUT, 0};
    const int ready = ::poll(&wait, 1, patience);
    if (ready >= 0 || errno != EINTR) {
      return ready > 0;
    }
  }
}

// Deletes the requests of a strand that no thread serves.
void deleteUnserved(omni::giopStrand& strand) {
  for (omni::giopStreamList* link = strand.servers.next; link != &strand.servers;) {
    auto* const request = static_cast<omni::GIOP_S*>(link);
    link = link->next;
    if (request->state() == omni::IOP_S::UnUsed) {
      request->omni::giopStreamList::remove();
      delete request;
    }
  }
}

// Deletes the request that the ending thread has not read to the end. The ORB keeps such a request,
// and the thread that notices the end of the connection would dispatch the request again.
void deleteUnreadRequest(const omni::giopConnection& connection) {
  const omni_tracedmutex_lock lock(*omni::omniTransportLock);
  forEachStrand([&connection](omni::giopStrand& strand) {
    if (strand.connection == &connection) {
      deleteUnserved(strand);
    }
  });
}

}  // namespace

Connection::Connection(std::shared_ptr<Channel> channel, const char* type,
                       std::function<void()> released)
    : released_(std::move(released)),
      channel_(std::move(channel)),
      myAddress_(uri(type, localEndpoint(channel_->socket()), localEndpoint(channel_->socket()))),
      peerAddress_(uri(type, localEndpoint(channel_->socket()), peerEndpoint(channel_->socket()))) {
}

Connection::~Connection() {
  channel_->clearSelectable();
  released_();
}

int Connection::Send(void* bytes, std::size_t count, const omni_time_t& deadline) {
  const std::optional<SystemTime> end =
      isCloseConnection(bytes, count) ? SystemTime::min() : timeOf(deadline);
  for (;;) {
    const ssize_t sent = channel_->stream().send(bytes, count);
    if (sent > 0) {
      return static_cast<int>(std::min<ssize_t>(sent, INT_MAX));
    }
    if (errno != EAGAIN && errno != EINTR) {
      return -1;
    }
    if (!waitForRoom(channel_->socket(), end)) {
      return 0;
    }
  }
}

int Connection::Recv(void* bytes, std::size_t count, const omni_time_t& deadline) {
  return channel_->read(static_cast<char*>(bytes), std::min<std::size_t>(count, INT_MAX),
                        timeOf(deadline));
}

void Connection::Shutdown() {
  channel_->shutDown();
}

const char* Connection::myaddress() {
  return myAddress_.in();
}

const char* Connection::peeraddress() {
  return peerAddress_.in();
}

void Connection::setSelectable(int now, _CORBA_Boolean /*dataInBuffer*/) {
  constexpr int kThreadEnds = 2;  // the ORB's code for a thread that stops serving
  if (now == kThreadEnds) {
    if (channel_->isReading()) {
      deleteUnreadRequest(*this);
    }
    channel_->leave();
  } else {
    channel_->setSelectable();
  }
}

void Connection::clearSelectable() {
  channel_->clearSelectable();
}

_CORBA_Boolean Connection::isSelectable() {
  return true;  // true for every socket
}

// Serving threads do not wait for further requests.
_CORBA_Boolean Connection::Peek() {
  return false;
}

}  // namespace orb
