#include "assembler.h"

#include <algorithm>
#include <utility>

#include "orb/orb.h"

namespace orb {

using giop::Type;

RequestLimits requestLimits(const Options& options) {
  return {std::min(options.maxRequestBytes, options.maxMessageBytes), options.maxMessageBytes,
          options.largeOperations};
}

Assembler::Progress Assembler::take(const char* bytes, std::size_t count, Time now) {
  Progress taken;
  while (taken.bytes < count && !complete_ && taken.valid && !taken.starved) {
    const char* const next = bytes + taken.bytes;
    const std::size_t left = count - taken.bytes;
    if (headerTaken_ < headerLength_) {
      messageBegun_ = headerTaken_ == 0 ? now : messageBegun_;
      taken.bytes += takeHeader(next, left, taken.valid);
    } else {
      const std::size_t step = takeBody(next, left);
      taken.starved = step == 0;
      taken.bytes += step;
      taken.valid = checkLimit();
    }
    if (taken.valid && isMessageTaken()) {
      taken.valid = endMessage();
    }
  }
  return taken;
}

Assembler::Request Assembler::release() {
  Request request = std::move(*complete_);
  complete_.reset();
  return request;
}

std::optional<Assembler::Time> Assembler::incompleteSince() const {
  std::optional<Time> earliest;
  const auto consider = [&earliest](Time time) {
    earliest = earliest ? std::min(*earliest, time) : time;
  };
  if (headerTaken_ > 0) {
    consider(part_ ? part_->begun : messageBegun_);
  }
  for (const auto& [id, part] : open_) {
    consider(part->begun);
  }
  return earliest;
}

std::size_t Assembler::takeHeader(const char* bytes, std::size_t count, bool& valid) {
  const std::size_t taken = std::min(count, headerLength_ - headerTaken_);
  std::copy_n(bytes, taken, headerBytes_ + headerTaken_);
  headerTaken_ += taken;
  if (headerTaken_ == giop::kHeaderBytes && headerLength_ == giop::kHeaderBytes) {
    valid = beginMessage();
  } else if (headerTaken_ == headerLength_) {
    const char* const id = headerBytes_ + giop::kHeaderBytes;
    valid = continueRequest(giop::parseNumber(id, header_.littleEndian));
  }
  return taken;
}

// Returns the number of consumed bytes; 0 if the budget is exhausted.
std::size_t Assembler::takeBody(const char* bytes, std::size_t count) {
  std::size_t step = std::min(count, remaining_);
  if (part_ && !part_->refused) {
    const std::size_t size = part_->bytes.size();
    if (size + remaining_ > part_->limit) {
      step = std::min(step, kMaxHead - size);  // the operation is not known yet
    }
    step = part_->bytes.append(bytes, step);
  }
  remaining_ -= step;
  return step;
}

bool Assembler::beginMessage() {
  const std::optional<giop::Header> header = giop::parseHeader(headerBytes_);
  if (!header) {
    return false;
  }
  header_ = *header;
  remaining_ = header->bodyBytes;
  const bool isFragment = header->type == Type::kFragment;
  if (header->type == Type::kRequest || header->type == Type::kLocateRequest) {
    return beginRequest();
  }
  if (isFragment && header->minorVersion == 1) {
    return continueRequest(0);  // GIOP 1.1 fragments have no request id: one request at most
  }
  if ((!isFragment && header->type != Type::kCancelRequest) || remaining_ < giop::kRequestIdBytes) {
    return false;
  }
  headerLength_ += giop::kRequestIdBytes;
  remaining_ -= giop::kRequestIdBytes;
  return true;
}

bool Assembler::beginRequest() {
  part_ = std::make_unique<Part>(header_, budget_, messageBegun_);
  part_->limit = limits_.requestBytes;
  part_->bytes.append(headerBytes_, giop::kHeaderBytes);
  return checkLimit();
}

// Handles the header of a Fragment or CancelRequest message.
bool Assembler::continueRequest(std::uint32_t id) {
  const auto found = open_.find(id);
  if (header_.type == Type::kCancelRequest || found == open_.end()) {
    open_.erase(id);
    return true;
  }
  std::unique_ptr<Part> part = std::move(found->second);
  open_.erase(found);
  // Joined fragments keep the alignment of numbers only at multiples of 8 bytes after the header.
  const std::size_t aligned = part->first.minorVersion == 1 ? giop::kHeaderBytes % 8 : 0;
  if (header_.minorVersion != part->first.minorVersion ||
      header_.littleEndian != part->first.littleEndian ||
      (!part->refused && remaining_ > 0 && part->bytes.size() % 8 != aligned)) {
    return false;
  }
  part_ = std::move(part);
  return checkLimit();
}

bool Assembler::checkLimit() {
  if (!part_ || part_->refused) {
    return true;
  }
  const std::size_t size = part_->bytes.size();
  const std::size_t declared = size + remaining_;
  const bool couldGrow = remaining_ > 0 && size < kMaxHead;
  if (declared <= part_->limit || (couldGrow && size < part_->parseAt)) {
    return true;
  }
  if (part_->first.type != Type::kRequest) {
    return false;
  }
  const auto head = giop::parseRequestHead(part_->first, part_->bytes.front());
  const bool large = head && isLarge(head->operation);
  if (!head || (large && !head->isWhole && couldGrow)) {
    part_->parseAt = 2 * size;
    return couldGrow;
  }
  // Decoded service contexts need many times their encoded size, so they must be small.
  if (large && head->isWhole) {
    part_->limit = limits_.messageBytes;
  }
  return declared <= part_->limit || refuseRequest(*head, declared);
}

bool Assembler::refuseRequest(const giop::RequestHead& head, std::size_t declared) {
  const std::uint8_t version = part_->first.minorVersion;
  const std::string substitute = giop::emptyRequest(version, head);
  part_->bytes.clear();
  part_->id = version == 2 ? head.id : 0;
  part_->refused = true;
  complete_.emplace(Request{Chunks(budget_), head, declared});
  complete_->bytes.append(substitute.data(), substitute.size());
  return true;
}

bool Assembler::isLarge(const std::string& operation) const {
  const std::vector<std::string>& large = limits_.largeOperations;
  return std::find(large.begin(), large.end(), operation) != large.end();
}

bool Assembler::endMessage() {
  headerTaken_ = 0;
  headerLength_ = giop::kHeaderBytes;
  if (!part_) {
    return true;
  }
  std::unique_ptr<Part> part = std::move(part_);
  if (header_.moreFragments) {
    return awaitFragment(std::move(part));
  }
  if (!part->refused) {
    if (!giop::isTargetKey(part->first, part->bytes.front())) {
      return false;
    }
    const std::size_t size = part->bytes.size();
    giop::rewriteHeader(part->bytes.data(), size);
    complete_.emplace(Request{std::move(part->bytes), std::nullopt, size});
  }
  return true;
}

bool Assembler::awaitFragment(std::unique_ptr<Part> part) {
  if (!part->id && part->first.minorVersion == 2) {
    if (part->bytes.size() < giop::kHeaderBytes + giop::kRequestIdBytes) {
      return false;
    }
    const char* const id = part->bytes.data() + giop::kHeaderBytes;
    part->id = giop::parseNumber(id, part->first.littleEndian);
  }
  const std::uint32_t id = part->id.value_or(0);
  return open_.size() < kMaxOpen && open_.emplace(id, std::move(part)).second;
}

}  // namespace orb
