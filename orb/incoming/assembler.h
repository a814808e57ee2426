// Makes whole messages of what a client sends.

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

struct RequestLimits {
  std::size_t requestBytes = 0;  // of a request, header and fragments included
  std::size_t messageBytes = 0;  // of a request for one of the large operations
  std::vector<std::string> largeOperations;
};

// Parses the bytes of one connection into complete requests, fragments joined, so that the ORB
// never waits for the rest of a message and never sees a size that was declared and not sent.
// Messages that a server only has to ignore (CancelRequest, fragments of unknown requests) are
// dropped. A request over its limit becomes a refused request: one without arguments, which is
// complete as soon as the size is known. The bytes of the original are dropped as they arrive.
// A request that does not name its object by its key is invalid: clients use other ways only when
// a server asks for them.
//
// Thread-safety: none.
class Assembler {
 public:
  using Time = std::chrono::steady_clock::time_point;

  struct Request {
    Chunks bytes;
    // Set when the request was refused for its size.
    std::optional<giop::RequestHead> refused;
    std::size_t declaredBytes = 0;  // of the original
  };

  // What take() made of its bytes.
  struct Taken {
    std::size_t bytes = 0;  // fewer than given: a request is complete, or the budget is exhausted
    bool starved = false;   // the budget is exhausted
    bool valid = true;      // false: the connection is of no further use
  };

  // REQUIRES: limits and budget outlive this.
  Assembler(const RequestLimits& limits, ReceiveBudget& budget)
      : limits_(limits), budget_(budget) {}

  // Consumes bytes up to the end of a request. REQUIRES: no request is complete.
  Taken take(const char* bytes, std::size_t count, Time now);

  bool isComplete() const { return complete_.has_value(); }

  // Null: no request is complete.
  const Request* complete() const { return complete_ ? &*complete_ : nullptr; }

  // The complete request, which is the caller's from now on. REQUIRES: isComplete.
  Request release();

  // When the first byte of the oldest incomplete message was taken.
  std::optional<Time> begun() const;

 private:
  // A request that arrives in one message or several.
  struct Part {
    Part(const giop::Header& header, ReceiveBudget& budget, Time time)
        : first(header), bytes(budget), begun(time) {}

    giop::Header first;  // of its first message
    Chunks bytes;
    Time begun;
    std::size_t limit = 0;
    std::size_t parseAt = 0;  // size from which on it is worth looking for the operation
    std::optional<std::uint32_t> id;
    bool refused = false;  // what arrives is dropped
  };

  std::size_t takeHeader(const char* bytes, std::size_t count, bool& valid);
  std::size_t takeBody(const char* bytes, std::size_t count);
  bool beginMessage();
  bool beginRequest();
  bool continueRequest(std::uint32_t id);
  bool checkLimit();
  bool refuse(const giop::RequestHead& head, std::size_t declared);
  bool isLarge(const std::string& operation) const;
  bool isMessageTaken() const { return headerTaken_ == headerLength_ && remaining_ == 0; }
  bool endMessage();
  bool awaitFragment(std::unique_ptr<Part> part);

  // Requests of one connection whose fragments may arrive in turns.
  static constexpr std::size_t kMaxOpen = 4;
  // The operation of a request that is over the common limit must end within its first bytes, and
  // so must the service contexts of a large operation.
  static constexpr std::size_t kMaxHead = Chunks::kChunk;

  const RequestLimits& limits_;
  ReceiveBudget& budget_;

  // The message that is being taken.
  char headerBytes_[giop::kHeaderBytes + giop::kRequestIdBytes] = {};
  std::size_t headerTaken_ = 0;  // of headerBytes_
  std::size_t headerLength_ = giop::kHeaderBytes;
  giop::Header header_;
  std::size_t remaining_ = 0;  // bytes of its body
  Time messageBegun_;
  std::unique_ptr<Part> part_;  // where the body goes; null: nowhere

  // By request id, those that wait for a fragment. Fragments may be as short as their headers, so
  // that a request is not moved for each of them.
  std::map<std::uint32_t, std::unique_ptr<Part>> open_;
  std::optional<Request> complete_;
};

}  // namespace orb

#endif
