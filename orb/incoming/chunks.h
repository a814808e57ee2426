// Queue of received bytes with a memory budget.

#ifndef ORB_INCOMING_CHUNKS_H
#define ORB_INCOMING_CHUNKS_H

#include <atomic>
#include <cstddef>
#include <list>
#include <string>
#include <string_view>
#include <utility>

namespace orb {

// Limits the memory for incomplete long messages of all connections together.
//
// Thread-safety: any thread. Owns a number only. No function fails.
class ReceiveBudget {
 public:
  explicit ReceiveBudget(std::size_t bytes) : free_(bytes) {}
  ReceiveBudget(const ReceiveBudget&) = delete;
  ReceiveBudget& operator=(const ReceiveBudget&) = delete;

  // Returns false, and reserves nothing, if fewer bytes are free.
  bool take(std::size_t bytes);
  // Returns reserved bytes to the budget.
  void give(std::size_t bytes);

 private:
  std::atomic<std::size_t> free_;
};

// A queue of bytes that allocates memory chunk by chunk on append() and frees it on take(). Memory
// beyond the first chunk is reserved in a budget.
//
// Thread-safety: none. Owns its bytes, borrows the budget. append() throws std::bad_alloc.
class Chunks {
 public:
  static constexpr std::size_t kChunk = 65536;

  // REQUIRES: the budget outlives this.
  explicit Chunks(ReceiveBudget& budget) : budget_(&budget) {}
  ~Chunks() { clear(); }
  Chunks(Chunks&& other) noexcept;
  Chunks& operator=(Chunks&& other) noexcept;

  std::size_t size() const { return size_; }

  // Returns the number of appended bytes: less than `count` if the budget is exhausted.
  std::size_t append(const char* bytes, std::size_t count);

  // Moves up to `count` bytes from the front to `to`. Returns their number, 0 for an empty queue.
  std::size_t take(char* to, std::size_t count);

  // The contiguous bytes at the front: the first kChunk bytes, before the first take().
  std::string_view front() const;
  // REQUIRES: not empty.
  char* data() { return chunks_.front().data(); }

  void clear();

 private:
  bool addChunk();
  void dropFront();

  ReceiveBudget* budget_;
  std::list<std::string> chunks_;  // a move of std::deque allocates
  std::size_t taken_ = 0;          // removed bytes of the first chunk
  std::size_t size_ = 0;
  std::size_t reserved_ = 0;  // bytes reserved in the budget
};

}  // namespace orb

#endif
