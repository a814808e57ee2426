// Assembly of complete requests from the bytes of a connection.

#ifndef ORB_INCOMING_ASSEMBLER_H
#define ORB_INCOMING_ASSEMBLER_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "chunks.h"
#include "giop.h"

namespace orb {

struct Options;

struct RequestLimits {
  std::size_t requestBytes = 0;  // largest request, header and fragments included
  std::size_t messageBytes = 0;  // largest request for one of the large operations
  std::vector<std::string> largeOperations;
};

// Returns the limits in the options; no request may exceed Options::maxMessageBytes.
RequestLimits requestLimits(const Options& options);

// Parses the bytes of one connection into complete requests with joined fragments. The ORB reads
// complete requests only, so it never waits for the rest of a message and never allocates memory
// for a declared size.
//
// - CancelRequest messages and fragments of unknown requests are dropped.
// - A request over its limit is replaced by a refused request without arguments, which is complete
//   as soon as the size is known. The bytes of the original request are dropped on arrival.
// - A request must name its object by the object key; other target kinds are invalid, because
//   clients use them only on demand of a server.
//
// Thread-safety: none. Errors are returned in Progress; std::bad_alloc passes.
class Assembler {
 public:
  using Time = std::chrono::steady_clock::time_point;

  struct Request {
    Chunks bytes;
    std::optional<giop::RequestHead> refused;  // a value if the original was over its limit
    std::size_t declaredBytes = 0;             // size of the original
  };

  // The result of take().
  struct Progress {
    std::size_t bytes =
        0;                 // consumed: all of them, unless a request is complete or starved is true
    bool starved = false;  // the budget is exhausted
    bool valid = true;     // false: the bytes violate GIOP and the connection must be closed
  };

  // REQUIRES: limits and budget outlive this.
  Assembler(const RequestLimits& limits, ReceiveBudget& budget)
      : limits_(limits), budget_(budget) {}

  // Consumes bytes until a request is complete. REQUIRES: no request is complete.
  Progress take(const char* bytes, std::size_t count, Time now);

  bool isComplete() const { return complete_.has_value(); }

  // Borrowed until release(); null if no request is complete.
  const Request* complete() const { return complete_ ? &*complete_ : nullptr; }

  // Moves the complete request to the caller. REQUIRES: isComplete().
  Request release();

  // Arrival time of the first byte of the oldest incomplete message; no value if there is none.
  std::optional<Time> incompleteSince() const;

 private:
  // An incomplete request, of one or several messages.
  struct Part {
    Part(const giop::Header& header, ReceiveBudget& budget, Time time)
        : first(header), bytes(budget), begun(time) {}

    giop::Header first;  // header of the first message
    Chunks bytes;
    Time begun;
    std::size_t limit = 0;
    std::size_t parseAt = 0;  // size at which the request head is parsed next
    std::optional<std::uint32_t> id;
    bool refused = false;  // further bytes are dropped
  };

  std::size_t takeHeader(const char* bytes, std::size_t count, bool& valid);
  std::size_t takeBody(const char* bytes, std::size_t count);
  bool beginMessage();
  bool beginRequest();
  bool continueRequest(std::uint32_t id);
  bool checkLimit();
  bool refuseRequest(const giop::RequestHead& head, std::size_t declared);
  bool isLarge(const std::string& operation) const;
  bool isMessageTaken() const { return headerTaken_ == headerLength_ && remaining_ == 0; }
  bool endMessage();
  bool awaitFragment(std::unique_ptr<Part> part);

  // Maximum number of requests of one connection with interleaved fragments.
  static constexpr std::size_t kMaxOpen = 4;
  // If a request is over the common limit, its operation must end within this number of bytes. The
  // same limit applies to the service contexts of a large operation.
  static constexpr std::size_t kMaxHead = Chunks::kChunk;

  const RequestLimits& limits_;
  ReceiveBudget& budget_;

  // The current message.
  char headerBytes_[giop::kHeaderBytes + giop::kRequestIdBytes] = {};
  std::size_t headerTaken_ = 0;  // received bytes of headerBytes_
  std::size_t headerLength_ = giop::kHeaderBytes;
  giop::Header header_;
  std::size_t remaining_ = 0;  // missing bytes of the body
  Time messageBegun_;
  std::unique_ptr<Part> part_;  // receives the body; null: the body is dropped

  // Requests that wait for a fragment, by request id. Pointers, because fragments may be as short
  // as a header and a move per fragment would be expensive.
  std::map<std::uint32_t, std::unique_ptr<Part>> open_;
  std::optional<Request> complete_;
};

}  // namespace orb

#endif
