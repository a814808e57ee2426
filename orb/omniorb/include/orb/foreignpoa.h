// What a POA that is not the ORB's own must do for this ORB. For tests.

#ifndef ORB_FOREIGNPOA_H
#define ORB_FOREIGNPOA_H

#include <atomic>

#include "orb/corba.h"

namespace orb {

// Counts the references to it and leaves the operations of a POA to the subclass. The owner keeps
// it until every reference is gone.
class ForeignPoa : public PortableServer::POA {
 public:
  // Taken with _duplicate and not yet released.
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
