// A POA that is not the ORB's own.

#ifndef TESTS_FAKES_POASTANDIN_H
#define TESTS_FAKES_POASTANDIN_H

#include <memory>

#include "orb/orb.h"

namespace fakes {

// Refuses whatever it is asked for with CORBA::NO_IMPLEMENT, and counts the references to it. The
// owner keeps it until every reference is gone.
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
