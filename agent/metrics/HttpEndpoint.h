// An HTTP endpoint for programs that watch the agent.

#ifndef AGENT_METRICS_HTTPENDPOINT_H
#define AGENT_METRICS_HTTPENDPOINT_H

#include <functional>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>

#include "orb/orb.h"

namespace agent {

struct HttpAnswer {
  int status = 200;
  std::string contentType = "text/plain; charset=utf-8";
  std::string body;
};

// The endpoint cannot listen. what() is one line. A plain value.
class HttpError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Answers GET and HEAD requests to fixed paths. Every connection serves one request. The number of
// threads, the size of a request and the time for a request are bounded: a client that does not
// send or read occupies one thread for 2 seconds at most.
//
// Thread-safety: constructed and destroyed by one thread.
// Ownership: owns its threads and the functions.
// Errors: the constructor throws HttpError. An exception of a function becomes the status 500.
class HttpEndpoint {
 public:
  // Called on several threads at the same time.
  using Page = std::function<HttpAnswer()>;
  using Pages = std::map<std::string, Page>;  // by path, such as "/metrics"

  HttpEndpoint(const orb::Endpoint& endpoint, Pages pages);

  // Ends the running requests, within 2 seconds.
  ~HttpEndpoint();

  HttpEndpoint(const HttpEndpoint&) = delete;
  HttpEndpoint& operator=(const HttpEndpoint&) = delete;

  // For port 0 the port that the system chose.
  const orb::Endpoint& endpoint() const { return endpoint_; }

  struct Context;  // for the callbacks of the server

 private:
  orb::Endpoint endpoint_;
  std::unique_ptr<Context> context_;
};

}  // namespace agent

#endif
