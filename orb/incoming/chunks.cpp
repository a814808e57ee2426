#include "chunks.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace orb {

bool ReceiveBudget::take(std::size_t bytes) {
  std::size_t free = free_;
  while (free >= bytes) {
    if (free_.compare_exchange_weak(free, free - bytes)) {
      return true;
    }
  }
  return false;
}

void ReceiveBudget::give(std::size_t bytes) {
  free_ += bytes;
}

Chunks::Chunks(Chunks&& other) noexcept
    : budget_(other.budget_),
      chunks_(std::exchange(other.chunks_, {})),
      taken_(std::exchange(other.taken_, 0)),
      size_(std::exchange(other.size_, 0)),
      reserved_(std::exchange(other.reserved_, 0)) {}

Chunks& Chunks::operator=(Chunks&& other) noexcept {
  clear();
  budget_ = other.budget_;
  chunks_ = std::exchange(other.chunks_, {});
  taken_ = std::exchange(other.taken_, 0);
  size_ = std::exchange(other.size_, 0);
  reserved_ = std::exchange(other.reserved_, 0);
  return *this;
}

std::size_t Chunks::append(const char* bytes, std::size_t count) {
  std::size_t appended = 0;
  while (appended < count) {
    if ((chunks_.empty() || chunks_.back().size() == kChunk) && !addChunk()) {
      break;
    }
    std::string& chunk = chunks_.back();
    const std::size_t piece = std::min(count - appended, kChunk - chunk.size());
    chunk.append(bytes + appended, piece);
    appended += piece;
    size_ += piece;
  }
  return appended;
}

std::size_t Chunks::take(char* to, std::size_t count) {
  if (size_ == 0) {
    return 0;
  }
  const std::string_view bytes = front();
  const std::size_t taken = std::min(count, bytes.size());
  std::memcpy(to, bytes.data(), taken);
  taken_ += taken;
  size_ -= taken;
  if (taken_ == chunks_.front().size()) {
    dropFront();
  }
  return taken;
}

std::string_view Chunks::front() const {
  return chunks_.empty() ? std::string_view() : std::string_view(chunks_.front()).substr(taken_);
}

void Chunks::clear() {
  chunks_.clear();
  taken_ = 0;
  size_ = 0;
  budget_->give(std::exchange(reserved_, 0));
}

bool Chunks::addChunk() {
  if (chunks_.empty()) {
    chunks_.emplace_back();
    return true;
  }
  if (!budget_->take(kChunk)) {
    return false;
  }
  reserved_ += kChunk;
  chunks_.emplace_back();
  chunks_.back().reserve(kChunk);
  return true;
}

void Chunks::dropFront() {
  chunks_.pop_front();
  taken_ = 0;
  const std::size_t given = std::min(reserved_, kChunk);
  reserved_ -= given;
  budget_->give(given);
}

}  // namespace orb
