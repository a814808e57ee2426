// A consistent copy of a store, made while the store is in use.

#ifndef AGENT_STORE_STORECOPY_H
#define AGENT_STORE_STORECOPY_H

#include <cstddef>
#include <cstdint>
#include <string>

namespace agent {

// The copy is made in steps. A change that is committed between two steps is in the copy too: the
// complete copy is the store after the last step. A complete copy is read once, from its beginning
// to its end, and leaves nothing on disk when it is destroyed.
//
// All functions throw StoreError when the disk fails. Thread-safety: none; all calls and the
// destruction take turns with the other uses of the store.
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
