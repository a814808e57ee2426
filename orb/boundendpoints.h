// The addresses of a server that has begun to listen.

#ifndef ORB_BOUNDENDPOINTS_H
#define ORB_BOUNDENDPOINTS_H

#include <optional>
#include <utility>
#include <vector>

#include "orb/orb.h"

namespace orb {

// Collects the addresses of the endpoints, in the order of startServer().
//
// Thread-safety: none; written by the thread that starts the ORB. Owns its values. Errors:
// std::bad_alloc.
class BoundEndpoints {
 public:
  // publish: as Options::publish.
  explicit BoundEndpoints(std::optional<Endpoint> publish) : publish_(std::move(publish)) {}

  // Adds an endpoint with the port that it listens at. Returns its address in references.
  const Endpoint& add(const Endpoint& endpoint) {
    bound_.push_back(endpoint);
    published_.push_back(endpoint);
    if (publish_ && endpoint.inReferences && endpoint.transport != Transport::kUnix) {
      published_.back().host = publish_->host;
      published_.back().port = publish_->port == 0 ? endpoint.port : publish_->port;
      publish_.reset();
    }
    return published_.back();
  }

  const std::vector<Endpoint>& bound() const { return bound_; }
  const std::vector<Endpoint>& published() const { return published_; }

 private:
  std::optional<Endpoint> publish_;  // no value after its use
  std::vector<Endpoint> bound_;
  std::vector<Endpoint> published_;
};

}  // namespace orb

#endif
