// A consistent copy of a store, made while the store is in use.

#ifndef AGENT_STORE_STORECOPY_H
#define AGENT_STORE_STORECOPY_H

#include <cstddef>
#include <cstdint>
#include <string>

namespace agent {

// The copy is made in steps and then read once from start to end. A change that is committed
// between two steps is part of the copy: the complete copy equals the store after the last step.
//
// Thread-safety: none; the owner of the store serialises all calls and the destruction with the
// other uses of the store. Ownership: borrows the store; owns its file, which the destructor
// removes. Errors: every function throws StoreError when the disk fails.
class StoreCopy {
 public:
  StoreCopy() = default;
  virtual ~StoreCopy() = default;
  StoreCopy(const StoreCopy&) = delete;
  StoreCopy& operator=(const StoreCopy&) = delete;

  // Copies about a megabyte. Returns true when the copy is complete.
  virtual bool step() = 0;

  // REQUIRES for the following functions: the copy is complete.

  virtual std::uint64_t size() const = 0;
  virtual std::uint64_t bytesLeft() const = 0;
  virtual std::string read(std::size_t maxBytes) = 0;
};

}  // namespace agent

#endif
