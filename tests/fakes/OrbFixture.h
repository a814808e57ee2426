// A running ORB with an iterator POA, for tests of servants.

#ifndef TESTS_FAKES_ORBFIXTURE_H
#define TESTS_FAKES_ORBFIXTURE_H

#include <memory>

#include "orb/orb.h"
#include "tests/fakes/Fixture.h"

namespace fakes {

// A server ORB on a free port. Its root POA has a child POA for iterators: transient, unique system
// ids, implicit activation. The destructor destroys the ORB. Thread-safety: one thread. Owns ORB
// and POA. Throws orb::EndpointError and CORBA exceptions.
class RunningOrb {
 public:
  RunningOrb();
  ~RunningOrb();
  RunningOrb(const RunningOrb&) = delete;
  RunningOrb& operator=(const RunningOrb&) = delete;

  PortableServer::POA_ptr iteratorPoa() { return iteratorPoa_.in(); }  // borrowed
  CORBA::ORB_ptr get() { return server_->get(); }                      // borrowed

 private:
  std::unique_ptr<orb::Server> server_;
  PortableServer::POA_var iteratorPoa_;
};

// Gives the fake agent the iterator POA of the ORB. Thread-safety: the test thread only. Owns the
// ORB. Errors: as RunningOrb.
class OrbFixture : public PlatformFixture {
 protected:
  OrbFixture() {
    ::testing::FLAGS_gtest_death_test_style = "threadsafe";
    useIteratorPoa(orb_.iteratorPoa());
  }
  ~OrbFixture() override { resetAll(); }

  RunningOrb& orb() { return orb_; }

 private:
  RunningOrb orb_;
};

}  // namespace fakes

#endif
