// Bytes that were received and are not read yet.

#ifndef ORB_INCOMING_CHUNKS_H
#define ORB_INCOMING_CHUNKS_H

#include <atomic>
#include <cstddef>
#include <deque>
#include <string>
#include <string_view>
#include <utility>

namespace orb {

// The memory that long messages of all connections may take together while they arrive.
//
// Thread-safety: any thread.
class ReceiveBudget {
 public:
  explicit ReceiveBudget(std::size_t bytes) : free_(bytes) {}
  ReceiveBudget(const ReceiveBudget&) = delete;
  ReceiveBudget& operator=(const ReceiveBudget&) = delete;

  bool take(std::size_t bytes);
  void give(std::size_t bytes);

 private:
  std::atomic<std::size_t> free_;
};

// A queue of bytes that takes memory as they arrive and gives it back as they are read. Memory
// beyond the first chunk is taken from a budget.
//
// Thread-safety: none.
class Chunks {
 public:
  static constexpr std::size_t kChunk = 65536;

  // REQUIRES: the budget outlives this.
  explicit Chunks(ReceiveBudget& budget) : budget_(&budget) {}
  ~Chunks() { clear(); }
  Chunks(Chunks&& other) noexcept;
  Chunks& operator=(Chunks&& other) noexcept;

  std::size_t size() const { return size_; }

  // Returns how many of the bytes were appended: fewer when the budget is exhausted.
  std::size_t append(const char* bytes, std::size_t count);

  // Reads and removes up to so many bytes from the front; 0 when there are none.
  std::size_t take(char* to, std::size_t count);

  // The bytes from the front on that are contiguous: all of them up to kChunk, if none was taken.
  std::string_view front() const;
  char* data() { return chunks_.front().data(); }

  void clear();

 private:
  bool addChunk();
  void dropFront();

  ReceiveBudget* budget_;
  std::deque<std::string> chunks_;
  std::size_t taken_ = 0;  // bytes of the first chunk that are gone
  std::size_t size_ = 0;
  std::size_t reserved_ = 0;  // of the budget
};

}  // namespace orb

#endif
