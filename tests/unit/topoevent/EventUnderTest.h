// Passes events to the handler, and reads the notifications that the handler sends.

#ifndef TESTS_UNIT_TOPOEVENT_EVENTUNDERTEST_H
#define TESTS_UNIT_TOPOEVENT_EVENTUNDERTEST_H

#include <ostream>
#include <string>
#include <vector>

#include "orb/idl/TopoManagementManager.h"
#include "tests/fakes/OrbFixture.h"
#include "topoevent/CorbaTopoEventHandler.h"
#include "topoevent/NodeLabelCache.h"
#include "topoevent/TopoEventMgr.h"

constexpr int kCreated = 372;
constexpr int kDeleted = 373;
constexpr int kChanged = 374;

// A notification about a label: the object's name as fakes::printed makes it, and the new label.
struct LabelChange {
  std::string object;
  std::string label;
};

inline bool operator==(const LabelChange& left, const LabelChange& right) {
  return left.object == right.object && left.label == right.label;
}

inline void PrintTo(const LabelChange& change, std::ostream* out) {
  *out << change.object << " has the label " << fakes::quoted(change.label);
}

// nodeLabelCache and lastReportedLabel are shared by all tests of the process, so each test uses
// identifiers of its own (own). The fixture has an ORB, because a CORBA::Any cannot be copied
// without an ORB.
class EventUnderTest : public fakes::OrbFixture {
 protected:
  using Lines = std::vector<std::string>;
  using Changes = std::vector<LabelChange>;

  EventUnderTest() { topo::lastReportedLabel.storeChange("reported before the test"); }
  ~EventUnderTest() override { TopoEventMgr::CleanUp(); }

  // An identifier that no other test uses.
  static std::string own(const std::string& identifier) {
    return ::testing::UnitTest::GetInstance()->current_test_info()->name() + ("/" + identifier);
  }

  // Passes an event with these nodes to the handler.
  int handle(int event, const std::vector<NS_DOMAIN::TopoNode_T>& nodes) {
    TEEvent carried;
    carried.nodes = nodes;
    return handler_.HandleEvent(event, 0, carried);
  }

  // The node in the n-th notification, which must be a creation.
  static TopoManagementManager::Node_T createdNode(std::size_t nth) {
    const fakes::Notification sent = fakes::notificationsSent().at(nth);
    const TopoManagementManager::Node_T* node = nullptr;
    if (!(sent.object >>= node)) {
      ADD_FAILURE() << "creation " << nth << " carries no node";
      return {};
    }
    return *node;
  }

  // The label changes that were sent. Expects that every notification changes "nativeEMSName" only.
  static Changes changes() {
    Changes result;
    for (const fakes::Notification& sent : fakes::notificationsSent()) {
      EXPECT_EQ(sent.kind, "changed");
      EXPECT_EQ(sent.attributes.length(), 1U);
      EXPECT_STREQ(sent.attributes[0].name.in(), "nativeEMSName");
      const char* label = nullptr;
      EXPECT_TRUE(sent.attributes[0].value >>= label);
      result.push_back({fakes::printed(sent.objectName), label == nullptr ? "" : label});
    }
    return result;
  }

  static LabelChange change(const std::string& identifier, const std::string& label) {
    return {fakes::printed(fakes::nameOf("TopoSubnetwork", identifier)), label};
  }

  static Lines logged() { return fakes::Journal::linesOf({"TaDebug", "TaDebugWithPara"}); }

  NS_CORBA::CorbaTopoEventHandler handler_;
};

#endif
