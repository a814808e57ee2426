// Everything in which ORBs differ, behind one interface. The rest of the source is written to the
// OMG C++ mapping alone.

#ifndef ORB_ORB_H
#define ORB_ORB_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "orb/corba.h"

namespace orb {

// 256 MiB, about a million nodes in one message at 250 bytes a node.
constexpr std::size_t kDefaultMaxMessageBytes = std::size_t{256} * 1024 * 1024;
constexpr std::size_t kMinMaxMessageBytes = 8192;        // the least that the ORB accepts
constexpr std::size_t kMaxMaxMessageBytes = 0x7fffffff;  // lengths in GIOP are 32-bit

constexpr std::size_t kDefaultMaxRequestBytes = std::size_t{1024} * 1024;
constexpr std::size_t kDefaultMaxConnections = 500;

struct Options {
  std::size_t maxMessageBytes = kDefaultMaxMessageBytes;  // largest GIOP message, both directions
  std::chrono::milliseconds callTimeout{10000};           // of every outgoing call; 0: none
  // Of every request from its first byte to its last, fragments and pauses included, and of every
  // reply; 0: none. Then the connection is closed, so that a client that stops in the middle of a
  // message holds nothing longer than this.
  std::chrono::milliseconds serveTimeout{60000};
  // Of the arguments and of the reply of a request that something waits for: the end of its object,
  // of its POA (destroyPoa) or of the ORB. Then the connection of the request is shut down, unless
  // the request runs in its servant.
  std::chrono::milliseconds drainGrace{2000};

  // What follows concerns startServer alone.

  // Largest incoming request, header and fragments included. A larger one is refused before its
  // arguments are decoded, with an exception for which isMessageTooLarge is true.
  std::size_t maxRequestBytes = kDefaultMaxRequestBytes;
  // Operations whose requests may have maxMessageBytes instead.
  std::vector<std::string> largeOperations;
  // Incoming connections that may be open at once; further ones are closed as soon as they are
  // accepted. REQUIRES: at least 1.
  std::size_t maxConnections = kDefaultMaxConnections;
  // An incoming connection without a request for so long is closed. Rounded up to seconds.
  std::chrono::milliseconds idleTimeout{180000};
};

struct Endpoint {
  std::string host;
  std::uint16_t port = 0;  // 0: any free one
};

// "HOST:PORT", an IPv6 address in brackets.
std::string format(const Endpoint& endpoint);

// The endpoint cannot be listened on.
class EndpointError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Receives the ORB's own diagnostics, one line a call, from any thread. Of a flood of lines the
// first ones come through, then the number of those that were left out.
using LogFunction = std::function<void(const std::string&)>;

// A started ORB, ended by the destructor. One at a time in a process. Texts are UTF-8 on both
// sides.
class Orb {
 public:
  virtual ~Orb() = default;
  Orb(const Orb&) = delete;
  Orb& operator=(const Orb&) = delete;

  virtual CORBA::ORB_ptr get() = 0;  // borrowed

 protected:
  Orb() = default;
};

// An ORB that only calls out.
std::unique_ptr<Orb> startClient(const Options& options);

// A request on its way to a servant.
struct Request {
  std::string operation;  // as the client names it, "_is_a" and its like included
  std::string peer;       // numeric address of the client, without port; "" from within the process
  std::size_t bytes = 0;  // size of the message as its header declares it, of the first fragment
                          // only when there are several; 0 from within the process
};

// Admits a request before its arguments are decoded, on the request's thread. May wait, and holds
// up nobody but its connection then. May throw a CORBA system exception, which the client receives.
// The token that it returns is destroyed when the reply was sent or could not be sent; a request
// that ends with an exception destroys it before the exception is sent.
using RequestGuard = std::function<std::shared_ptr<void>(const Request&)>;

// Numeric address, without port, of the client whose request this thread serves; "" outside of a
// servant's operation, and in one that is called from within the process.
std::string currentPeer();

// An object at a key of its own choosing: HOST:PORT and the key are all that its references hold,
// so they stay valid over restarts on the same endpoint, and corbaloc::HOST:PORT/KEY reaches it.
// Requests raise TRANSIENT while no servant is published. Objects do not wait for each other.
//
// Thread-safety: publish and retire from one thread at a time, never from within a request to the
// object itself.
class WellKnownObject {
 public:
  virtual ~WellKnownObject() = default;
  WellKnownObject(const WellKnownObject&) = delete;
  WellKnownObject& operator=(const WellKnownObject&) = delete;

  // Serves the servant, whose references stay the caller's, behind the guard if there is one; a new
  // reference to the object for the caller. REQUIRES: nothing is published at present.
  virtual CORBA::Object_ptr publish(PortableServer::ServantBase* servant,
                                    RequestGuard guard = nullptr) = 0;

  // Refuses new requests and those that the guard has not admitted yet (the client sees TRANSIENT),
  // waits until the running ones have ended and no guard runs, and forgets servant and guard.
  // Clients that do not read or send are waited for no longer than Options::drainGrace. Does
  // nothing when nothing is published.
  virtual void retire() = 0;

 protected:
  WellKnownObject() = default;
};

// The object at another key of the server that a reference points to, for the caller; nothing is
// called. Throws BAD_PARAM for a reference without an address.
CORBA::Object_ptr objectBeside(CORBA::ORB_ptr orb, CORBA::Object_ptr reference,
                               const std::string& key);

// Where a reference points to: "HOST:PORT", "" when it does not tell. For messages.
std::string addressOf(CORBA::Object_ptr reference);

// How many bytes the value takes in a message, its type included. Nothing is copied where the ORB
// can count without copying. Thread-safety: any thread. Throws a CORBA system exception when the
// value cannot be encoded.
std::size_t encodedBytes(const CORBA::Any& value);

// How long a call through this reference may take from here on, connecting included, instead of
// Options::callTimeout. References to the same object that came from elsewhere keep theirs. A call
// that takes longer raises TIMEOUT or TRANSIENT.
void setCallTimeout(CORBA::Object_ptr reference, std::chrono::milliseconds timeout);

// What tells one object of a server from another in a request; opaque bytes.
using ObjectKey = std::string;

// Is told the target of every request that arrives from outside, before it is dispatched, on the
// request's thread. Must not throw, and is quick.
using RequestObserver = std::function<void(const ObjectKey&)>;

// An ORB that also serves.
class Server : public Orb {
 public:
  // One observer at a time; null ends the observation and returns when no call of it is running.
  virtual void observeRequests(RequestObserver observer) = 0;

  virtual PortableServer::POA_ptr rootPoa() = 0;  // borrowed

  // The endpoint that references of this server carry: the port is the one that was found for port
  // 0.
  virtual Endpoint endpoint() = 0;

  virtual std::unique_ptr<WellKnownObject> wellKnownObject(const std::string& key) = 0;
};

// Starts to listen at the endpoint; requests are served as POA managers are activated. The log also
// receives a line when connections or requests begin to be refused for the limits of the options,
// and a line with their number when that is over. Throws EndpointError.
std::unique_ptr<Server> startServer(const Options& options, const Endpoint& endpoint,
                                    const LogFunction& log);

// The key that requests to a reference of this process carry.
ObjectKey objectKeyOf(CORBA::Object_ptr reference);

// Refuses new requests to the objects of a POA (the client sees TRANSIENT), waits until the running
// ones have ended, and destroys the POA. Clients that do not read or send are waited for no longer
// than Options::drainGrace. REQUIRES: the POA has a POA manager of its own, and the thread serves
// no request. Throws OBJECT_NOT_EXIST when the POA is gone.
void destroyPoa(PortableServer::POA_ptr poa);

// Whether a POA is the ORB's own implementation, not some stand-in.
bool isOrbsOwnPoa(PortableServer::POA_ptr poa);

// Whether the destruction of a POA has begun or is complete. REQUIRES: isOrbsOwnPoa.
bool isCleanupInProgress(PortableServer::POA_ptr poa);

// "TRANSIENT (connection refused)": the exception's name and what the ORB knows about its cause.
std::string describe(const CORBA::SystemException& failure);

// Whether a call failed because a message was over the size limit of this process or of the peer.
bool isMessageTooLarge(const CORBA::SystemException& failure);

// Whether the connection ended within the answer: so a peer whose answer is over its own size limit
// ends one that it has begun to send, and so it ends when the peer dies. Not unreachable.
bool isBrokenOff(const CORBA::SystemException& failure);

// Whether a call took longer than it may.
bool isTimeout(const CORBA::SystemException& failure);

// Whether a call failed because its connection had ended: a new one may do. Whether the call was
// carried out is not known.
bool isConnectionClosed(const CORBA::SystemException& failure);

// Whether a call failed because nobody answers at the reference: no connection, none in time, or no
// such object there.
bool isUnreachable(const CORBA::SystemException& failure);

}  // namespace orb

#endif
