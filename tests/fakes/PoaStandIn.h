// A POA that the ORB did not make.

#ifndef TESTS_FAKES_POASTANDIN_H
#define TESTS_FAKES_POASTANDIN_H

#include <memory>

#include "orb/orb.h"

namespace fakes {

// Throws CORBA::NO_IMPLEMENT from every operation, and counts the references to the POA. The object
// must outlive every reference. Thread-safety: any thread. Owns the POA.
class PoaStandIn {
 public:
  PoaStandIn();
  ~PoaStandIn();
  PoaStandIn(const PoaStandIn&) = delete;
  PoaStandIn& operator=(const PoaStandIn&) = delete;

  PortableServer::POA_ptr get();  // borrowed

  // References taken with _duplicate and not yet released.
  int references() const;

 private:
  class Poa;
  std::unique_ptr<Poa> poa_;
};

}  // namespace fakes

#endif
