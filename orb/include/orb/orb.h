// The interface to the ORB. Code outside of orb/ uses this interface and the OMG C++ mapping; the
// differences between ORB products are hidden behind it.

#ifndef ORB_ORB_H
#define ORB_ORB_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "orb/corba.h"

namespace orb {

// 256 MiB, about a million nodes in one message at 250 bytes a node.
constexpr std::size_t kDefaultMaxMessageBytes = std::size_t{256} * 1024 * 1024;
constexpr std::size_t kMinMaxMessageBytes = 8192;        // the ORB's own minimum
constexpr std::size_t kMaxMaxMessageBytes = 0x7fffffff;  // lengths in GIOP are 32-bit

constexpr std::size_t kDefaultMaxRequestBytes = std::size_t{1024} * 1024;
constexpr std::size_t kDefaultMaxConnections = 500;

// How a client and a server are connected.
enum class Transport {
  kLocal,  // a call from this process
  kTcp,
  kUnix,
  kTls,
};

struct Endpoint {
  std::string host;        // a name or a numeric address; for kUnix the path of the socket
  std::uint16_t port = 0;  // 0: the system chooses a free port; unused for kUnix
  Transport transport = Transport::kTcp;
  // Whether references to the objects of a server contain the endpoint. For startServer() only.
  bool inReferences = true;
};

// A request from another process whose outcome is known. A plain value.
struct FinishedRequest {
  const char* operation = "";       // the name on the wire; borrowed for the call
  const char* exception = nullptr;  // the name of its type without scope; null: no exception
  bool isSystemException = false;
  // From the dispatch to the outcome. Excludes the transfer of the arguments. Includes the
  // transfer of the reply on TAO only.
  std::chrono::steady_clock::duration duration{0};
};

// Called at the end of every request from another process that expects a reply, requests to unknown
// objects and rejected requests included. Runs on the thread of the request, on several threads at
// the same time. Must not throw or block.
using RequestMeter = std::function<void(const FinishedRequest&)>;

// Certificates and keys of TLS, in PEM files.
struct TlsOptions {
  // Whether clients of TLS endpoints need a certificate.
  enum class Clients {
    kRequired,
    kOptional,  // a client without a certificate is accepted, a client with a wrong one is not
    kNone,      // no client is asked for a certificate
  };

  std::string certificate;  // the own certificate, followed by its chain; "": none
  std::string key;          // private key of the certificate, not encrypted
  std::string authorities;  // certificates of the trusted authorities; "": no peer is trusted
  std::string revoked;      // revocation lists of all authorities of a chain; "": none is checked
  Clients clients = Clients::kRequired;
  // Whether the certificate of a server must contain the host of the reference to the server.
  bool checkServerName = true;
};

// A file of TlsOptions cannot be used. what() names the file and the reason. Thread-safety,
// ownership and errors: as std::runtime_error.
class TlsError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Whether this ORB has TLS.
bool hasTls();

// Reads the files. Throws TlsError. Thread-safety: any thread.
void checkTls(const TlsOptions& options);

// Returns once why the latest TLS connection of the calling thread could not be used, as a clause;
// "" without a failure. Thread-safety: any thread.
std::string takeTlsFailure();

// Limits and timeouts of an ORB.
struct Options {
  std::size_t maxMessageBytes = kDefaultMaxMessageBytes;  // largest GIOP message, both directions
  std::chrono::milliseconds callTimeout{10000};           // of every outgoing call; 0: none
  // Limits the time from the first byte of a request to its last byte, fragments and pauses
  // included, and the time of sending a reply; 0: no limit. After the timeout the connection is
  // closed, so that a client that stops in the middle of a message does not occupy memory or
  // threads.
  std::chrono::milliseconds serveTimeout{60000};
  // Limits the transfer of arguments and reply of a request while retire(), destroyPoa() or the end
  // of the ORB waits for the request. After the grace period the connection of the request is shut
  // down. A request that runs in its servant is not affected.
  std::chrono::milliseconds drainGrace{2000};
  // TLS of outgoing calls, to servers whose references demand TLS, and of TLS endpoints.
  TlsOptions tls;

  // The options below apply to startServer() only.

  // Largest incoming request, header and fragments included. A larger request is rejected before
  // its arguments are decoded, with an exception for which isMessageTooLarge() is true.
  std::size_t maxRequestBytes = kDefaultMaxRequestBytes;
  // Operations whose requests are limited by maxMessageBytes instead of maxRequestBytes.
  std::vector<std::string> largeOperations;
  // Maximum number of open incoming connections. Further connections are closed immediately after
  // they are accepted. REQUIRES: at least 1.
  std::size_t maxConnections = kDefaultMaxConnections;
  // An incoming connection is closed after this time without a request. Rounded up to seconds.
  std::chrono::milliseconds idleTimeout{180000};
  // Host and port in references in place of those of the first endpoint that is not a Unix socket;
  // port 0: the port of that endpoint. For servers that clients reach at another address. The
  // transport is unused.
  std::optional<Endpoint> publish;
  // Used until the Server is destroyed. Empty: requests are not measured, at no cost.
  RequestMeter requestMeter;
};

// Returns "HOST:PORT", with brackets around an IPv6 address; "unix:PATH" for a Unix socket.
std::string format(const Endpoint& endpoint);

// Returns the endpoint for "HOST:PORT", "tcp:HOST:PORT", "tls:HOST:PORT", [HOST] for an IPv6
// address, or "unix:PATH". A bare HOST:PORT has the transport `bare`. The PATH must be absolute and
// without any of the characters ",:#%", which references cannot contain. No value for other texts.
std::optional<Endpoint> endpointFrom(const std::string& text, Transport bare = Transport::kTcp);

// Returns the corbaloc of the object with the key at an endpoint of a server, in the notation of
// this ORB. Throws std::bad_alloc only.
std::string corbaloc(const Endpoint& endpoint, const std::string& key);

// startServer() cannot listen at the endpoint. what() names the endpoint and the cause.
// Thread-safety, ownership and errors: as std::runtime_error.
class EndpointError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Receives the ORB's diagnostics, one line per call, on any thread. The lines are rate-limited: a
// flood is replaced by its first lines and the number of dropped lines.
using LogFunction = std::function<void(const std::string&)>;

// A running ORB. The owner of the object ends the ORB by destroying the object.
//
// A process has at most one Orb at a time. Strings are UTF-8 in memory and on the wire.
// Thread-safety: get() is safe on any thread; the destructor runs on one thread, outside of any
// request, and waits for running requests. Errors: get() never throws.
class Orb {
 public:
  virtual ~Orb() = default;
  Orb(const Orb&) = delete;
  Orb& operator=(const Orb&) = delete;

  virtual CORBA::ORB_ptr get() = 0;  // borrowed, valid until the Orb is destroyed

 protected:
  Orb() = default;
};

// Starts an ORB for outgoing calls only. Throws CORBA::SystemException and TlsError.
std::unique_ptr<Orb> startClient(const Options& options);

// The client of a request.
struct Peer {
  using Transport = orb::Transport;

  Transport transport = Transport::kLocal;
  std::string address;       // numeric, without port; "" for kLocal and kUnix
  std::string subject;       // subject of the verified certificate (RFC 4514); "" without one
  std::size_t endpoint = 0;  // index of the server's endpoint that accepted the connection
};

// A request before it is dispatched to its servant.
struct Request {
  std::string operation;  // the name on the wire, implicit operations such as "_is_a" included
  Peer peer;
  std::size_t bytes = 0;  // size of the message as declared in its header, or of its first
                          // fragment; 0 for a local call
};

// Admits a request before its arguments are decoded. Runs on the thread of the request.
//
// The guard may block: only the connection of the request waits then. The guard may throw a CORBA
// system exception: the request is rejected with that exception. The returned token is destroyed
// after the reply was sent or could not be sent, but before an exception is sent.
// Thread-safety: the ORB calls the guard on several threads at the same time.
using RequestGuard = std::function<std::shared_ptr<void>(const Request&)>;

// Returns the client whose request the calling thread serves; a Peer of kLocal outside of a
// servant's operation and during a call from this process.
Peer currentPeer();

// Returns the peer for messages: the address and the certificate's subject if there is one, such as
// "192.0.2.1 (CN=operator)"; "a local socket" for kUnix, "" for kLocal.
std::string format(const Peer& peer);

// An object with a fixed object key, addressable as corbaloc::HOST:PORT/KEY.
//
// References contain only HOST:PORT and the key, so they stay valid after a restart at the same
// endpoint. While no servant is published, requests fail with TRANSIENT. Several objects work
// independently: retire() of one object does not wait for requests to another object.
//
// Ownership: the caller owns the object, which may outlive the Server after retire(); the
// destructor calls retire(). Thread-safety: publish() and retire() are called by one thread at a
// time, and not within a request to the object itself. Errors: publish() throws
// CORBA::SystemException; retire() throws std::system_error if a thread cannot be started.
class WellKnownObject {
 public:
  virtual ~WellKnownObject() = default;
  WellKnownObject(const WellKnownObject&) = delete;
  WellKnownObject& operator=(const WellKnownObject&) = delete;

  // Dispatches requests to the servant, after the guard if there is one. Adds a reference to the
  // servant until retire(). Returns a new object reference, owned by the caller.
  // REQUIRES: no servant is published.
  virtual CORBA::Object_ptr publish(PortableServer::ServantBase* servant,
                                    RequestGuard guard = nullptr) = 0;

  // Rejects new requests, and requests that the guard has not admitted yet, with TRANSIENT. Waits
  // until no request and no guard runs, then releases servant and guard. A client that does not
  // read or send delays retire() by at most Options::drainGrace. Without a published servant
  // retire() has no effect.
  virtual void retire() = 0;

 protected:
  WellKnownObject() = default;
};

// Returns the object at another key of the server of `reference`; the caller owns the result. No
// remote call. Throws CORBA::BAD_PARAM for a reference without an address.
CORBA::Object_ptr objectBeside(CORBA::ORB_ptr orb, CORBA::Object_ptr reference,
                               const std::string& key);

// Returns "HOST:PORT" of the reference for messages; "" for nil and for a reference without an
// address.
std::string addressOf(CORBA::Object_ptr reference);

// Returns the encoded size of the value in a message, its type code included. The value is not
// copied if the ORB can count without copying. Thread-safety: any thread. Throws
// CORBA::SystemException when the value cannot be encoded.
std::size_t encodedBytes(const CORBA::Any& value);

// Sets the timeout of later calls through this reference, connecting included; replaces
// Options::callTimeout. Other references to the same object keep their timeouts. A call that
// exceeds the timeout fails with an exception for which isTimeout() is true. REQUIRES: not nil, and
// no call through the reference is running.
void setCallTimeout(CORBA::Object_ptr reference, std::chrono::milliseconds timeout);

// The bytes in a request that identify the target object within its server; opaque.
using ObjectKey = std::string;

// Called with the target of every request from another process, before the request is dispatched,
// on the thread of the request and on several threads at the same time. Must not throw or block.
using RequestObserver = std::function<void(const ObjectKey&)>;

// An ORB that also serves objects at an endpoint.
//
// Ownership: ORB and POA are borrowed until the Server is destroyed. Thread-safety: any thread,
// except that observeRequests() is called by one thread at a time. Errors: wellKnownObject() throws
// CORBA::SystemException; every function may throw std::bad_alloc.
class Server : public Orb {
 public:
  // Installs an observer in place of the present one; null removes the observer. Returns when no
  // call of the former observer is running.
  virtual void observeRequests(RequestObserver observer) = 0;

  virtual PortableServer::POA_ptr rootPoa() = 0;  // borrowed

  // The endpoints in references of this server, in the order of startServer(); for port 0 the port
  // that the system chose.
  virtual const std::vector<Endpoint>& endpoints() = 0;

  // The first of endpoints().
  const Endpoint& endpoint() { return endpoints().front(); }

  // The number of open incoming connections. The end of a connection is noticed when the system
  // reports it.
  virtual std::size_t openConnections() = 0;

  // Reads the files of Options::tls again, for later connections in both directions. Open
  // connections stay as they are. Throws TlsError and keeps the former certificates then.
  virtual void reloadTls() = 0;

  // REQUIRES: no other WellKnownObject has the key.
  virtual std::unique_ptr<WellKnownObject> wellKnownObject(const std::string& key) = 0;
};

// Listens at the endpoints. Requests to a POA are served after its POA manager was activated.
//
// The log function may be null. When connections or requests are rejected because of a limit in the
// options, the log receives a line at the first rejection and a line with the number of rejections
// when they have ended. The limits apply to all endpoints together. Throws EndpointError, also for
// a transport that this ORB does not have, and TlsError. REQUIRES: at least one endpoint, the
// first one in references; a certificate for a TLS endpoint.
std::unique_ptr<Server> startServer(const Options& options, const std::vector<Endpoint>& endpoints,
                                    const LogFunction& log);
inline std::unique_ptr<Server> startServer(const Options& options, const Endpoint& endpoint,
                                           const LogFunction& log) {
  return startServer(options, std::vector<Endpoint>{endpoint}, log);
}

// Returns the object key in requests to the reference. REQUIRES: an object of this process.
ObjectKey objectKeyOf(CORBA::Object_ptr reference);

// Rejects new requests to the objects of a POA with TRANSIENT, waits for the running requests, and
// destroys the POA. A client that does not read or send delays destroyPoa() by at most
// Options::drainGrace. REQUIRES: no other POA uses the POA's manager; the calling thread serves no
// request. Throws CORBA::OBJECT_NOT_EXIST for a destroyed POA.
void destroyPoa(PortableServer::POA_ptr poa);

// Whether the ORB implements the POA; false for a test double.
bool isOrbsOwnPoa(PortableServer::POA_ptr poa);

// Whether the destruction of a POA has begun or is complete. REQUIRES: isOrbsOwnPoa.
bool isCleanupInProgress(PortableServer::POA_ptr poa);

// Returns the name of the exception and the ORB's text for the cause, such as
// "TRANSIENT (connection refused)".
std::string describe(const CORBA::SystemException& failure);

// The functions below classify the exception of a failed call. Thread-safety: any thread.

// A message was over the size limit of this process or of the peer.
bool isMessageTooLarge(const CORBA::SystemException& failure);

// The connection ended in the middle of the reply: the peer has died, or a partially sent reply
// exceeded the peer's own size limit. isUnreachable() is false then.
bool isBrokenOff(const CORBA::SystemException& failure);

// The call exceeded its timeout.
bool isTimeout(const CORBA::SystemException& failure);

// The connection of the call had ended, so a retry on a new connection may succeed. Whether the
// servant has executed the call is unknown.
bool isConnectionClosed(const CORBA::SystemException& failure);

// No connection to the server could be made, so the call was not sent.
bool isNotConnected(const CORBA::SystemException& failure);

// The server answered that the object is temporarily not served, as a WellKnownObject without a
// servant answers. The servant has not executed the call, so a retry is safe and may succeed.
bool isRejected(const CORBA::SystemException& failure);

// No object answers at the reference: no connection, no reply in time, or no such object.
bool isUnreachable(const CORBA::SystemException& failure);

}  // namespace orb

#endif
