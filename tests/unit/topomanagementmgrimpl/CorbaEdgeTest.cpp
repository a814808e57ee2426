#include "topomanagementmgrimpl/CorbaEdge.h"

#include <gtest/gtest.h>

#include "orb/corba.h"
#include "tests/fakes/Journal.h"

namespace {

TEST(TopoCorbaEdge, PassesTheResultOn) {
  EXPECT_EQ(topo::atCorbaEdge([] { return 5; }), 5);
  topo::atCorbaEdge([] {});
}

TEST(TopoCorbaEdge, PassesTheUserException) {
  const auto operation = [] {
    throw globaldefs::ProcessingFailureException(globaldefs::EXCPT_OBJECT_IN_USE, "in use");
  };
  try {
    topo::atCorbaEdge(operation);
    FAIL() << "nothing was raised";
  } catch (const globaldefs::ProcessingFailureException& failure) {
    EXPECT_EQ(failure.exceptionType, globaldefs::EXCPT_OBJECT_IN_USE);
    EXPECT_STREQ(failure.errorReason.in(), "in use");
  }
}

TEST(TopoCorbaEdge, PassesSystemExceptions) {
  EXPECT_THROW(topo::atCorbaEdge(fakes::raiseTransient()), CORBA::TRANSIENT);
  EXPECT_THROW(topo::atCorbaEdge([] { throw CORBA::BAD_PARAM(); }), CORBA::BAD_PARAM);
}

TEST(TopoCorbaEdgeDeathTest, EndsTheProcessForAStandardException) {
  EXPECT_DEATH(topo::atCorbaEdge(fakes::raiseRuntimeError("foreign")), "foreign");
}

TEST(TopoCorbaEdgeDeathTest, EndsTheProcessForTheFrameworksException) {
  EXPECT_DEATH(topo::atCorbaEdge(fakes::raiseProcessException(7)), "ProcessException");
}

TEST(TopoCorbaEdgeDeathTest, NamesTheCodeWhenItEndsTheProcess) {
  const std::string code = "what\\(\\):  code ";
  EXPECT_DEATH(topo::atCorbaEdge(fakes::raiseProcessException(7)), code + "7");
  EXPECT_DEATH(topo::atCorbaEdge(fakes::raiseInterfaceNotExist()),
               code + "1092091908: no bundle publishes the service interface");
}

TEST(TopoCorbaEdgeDeathTest, EndsTheProcessForAMissingInterface) {
  EXPECT_DEATH(topo::atCorbaEdge(fakes::raiseInterfaceNotExist()), "InterfaceNotExistException");
}

TEST(TopoCorbaEdgeDeathTest, EndsTheProcessWhenMemoryIsShort) {
  EXPECT_DEATH(topo::atCorbaEdge(fakes::raiseBadAlloc()), "bad_alloc");
}

TEST(TopoCorbaEdgeDeathTest, EndsTheProcessForAnotherUserException) {
  EXPECT_DEATH(topo::atCorbaEdge([] { throw PortableServer::POA::WrongPolicy(); }), "WrongPolicy");
}

TEST(TopoCorbaEdgeDeathTest, EndsTheProcessForAThrownNumber) {
  EXPECT_DEATH(topo::atCorbaEdge([] { throw 5; }), "int");
}

}  // namespace
