// Ownership of a file descriptor.

#ifndef ORB_DESCRIPTOR_H
#define ORB_DESCRIPTOR_H

#include <unistd.h>

#include <utility>

namespace orb {

// Closes a descriptor at the end of its life. Thread-safety: none. Owns the descriptor; -1 is none.
// No function fails.
class Descriptor {
 public:
  explicit Descriptor(int descriptor) : descriptor_(descriptor) {}
  ~Descriptor() {
    if (descriptor_ >= 0) {
      ::close(descriptor_);
    }
  }
  Descriptor(Descriptor&& other) noexcept : descriptor_(other.release()) {}
  Descriptor& operator=(Descriptor&&) = delete;

  int get() const { return descriptor_; }
  int release() { return std::exchange(descriptor_, -1); }

 private:
  int descriptor_;
};

}  // namespace orb

#endif
