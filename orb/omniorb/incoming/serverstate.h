// What the endpoints of a server share.

#ifndef ORB_OMNIORB_INCOMING_SERVERSTATE_H
#define ORB_OMNIORB_INCOMING_SERVERSTATE_H

#include <atomic>
#include <chrono>
#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

#include "../../boundendpoints.h"
#include "../../incoming/assembler.h"
#include "../../tls.h"
#include "orb/orb.h"

namespace orb {

struct ChannelLimits {
  RequestLimits requests;
  std::size_t connections = 0;
  std::chrono::milliseconds requestTime{
      0};  // from the first byte of a request to its last; 0: none
  std::chrono::milliseconds handshakeTime{0};
};

// The options and limits of a server, and the results of its start.
//
// Thread-safety: the constants and the atomic members on any thread; `addresses` by
// the thread that starts the ORB. Owns its values. Errors: the constructor throws std::bad_alloc.
struct ServerState {
  // tls: null without a certificate.
  ServerState(const Options& options, std::vector<Endpoint> at,
              std::shared_ptr<TlsContext> tlsContext)
      : limits{requestLimits(options), options.maxConnections, options.serveTimeout,
               handshakeTime(options)},
        endpoints(std::move(at)),
        tls(std::move(tlsContext)),
        budget(2 * limits.requests.messageBytes),
        addresses(options.publish) {}

  const ChannelLimits limits;
  const std::vector<Endpoint> endpoints;  // as requested
  const std::shared_ptr<TlsContext> tls;
  ReceiveBudget budget;  // memory for incomplete requests of all connections
  std::atomic<std::size_t> connections{0};

  BoundEndpoints addresses;  // written during the start
};

}  // namespace orb

#endif
