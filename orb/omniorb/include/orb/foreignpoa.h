// A base of POAs that the ORB does not implement. For tests.

#ifndef ORB_FOREIGNPOA_H
#define ORB_FOREIGNPOA_H

#include <atomic>

#include "orb/corba.h"

namespace orb {

// Counts its references; a subclass implements the operations of a POA. The owner destroys the
// object after the last reference was released. Thread-safety: any thread. No function fails.
class ForeignPoa : public PortableServer::POA {
 public:
  // The number of references that were duplicated and not released.
  int references() const { return references_; }

  void _NP_incrRefCount() override { ++references_; }
  void _NP_decrRefCount() override { --references_; }

 protected:
  ForeignPoa() : PortableServer::POA(0) {}
  ~ForeignPoa() override = default;

 private:
  std::atomic<int> references_{0};
};

}  // namespace orb

#endif
