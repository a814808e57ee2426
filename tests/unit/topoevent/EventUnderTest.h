// Events for the handler, and what came of them.

#ifndef TESTS_UNIT_TOPOEVENT_EVENTUNDERTEST_H
#define TESTS_UNIT_TOPOEVENT_EVENTUNDERTEST_H

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

// What is remembered of labels is one for the process and outlives a test. Values of type any can
// be copied only while there is an ORB.
class EventUnderTest : public fakes::OrbFixture {
 protected:
  using Lines = std::vector<std::string>;

  EventUnderTest() { topo::lastReportedLabel.storeChange("reported before the test"); }
  ~EventUnderTest() override { TopoEventMgr::CleanUp(); }

  // An identifier that no other test has remembered.
  static std::string own(const std::string& identifier) {
    return ::testing::UnitTest::GetInstance()->current_test_info()->name() + ("/" + identifier);
  }

  // Delivers an event about these nodes.
  int handle(int event, const std::vector<NS_DOMAIN::TopoNode_T>& nodes) {
    TEEvent carried;
    carried.nodes = nodes;
    return handler_.HandleEvent(event, 0, carried);
  }

  // The node that a creation carries.
  static TopoManagementManager::Node_T createdNode(std::size_t nth) {
    const fakes::Notification sent = fakes::notificationsSent().at(nth);
    const TopoManagementManager::Node_T* node = nullptr;
    if (!(sent.object >>= node)) {
      ADD_FAILURE() << "creation " << nth << " carries no node";
      return {};
    }
    return *node;
  }

  // "[nativeEMSName=A]"
  static std::string printed(const notifications::NVList_T& attributes) {
    std::string text = "[";
    for (CORBA::ULong i = 0; i < attributes.length(); ++i) {
      const char* value = nullptr;
      const bool isText = attributes[i].value >>= value;
      text += (i == 0 ? "" : ", ") + std::string(attributes[i].name.in()) + "=" +
              (isText ? value : "(no text)");
    }
    return text + "]";
  }

  // Names and attributes of what was sent, "[EMS=EMS-1, TopoSubnetwork=a] [nativeEMSName=A]".
  static Lines changes() {
    Lines result;
    for (const fakes::Notification& sent : fakes::notificationsSent()) {
      EXPECT_EQ(sent.kind, "changed");
      result.push_back(fakes::printed(sent.objectName) + " " + printed(sent.attributes));
    }
    return result;
  }

  static std::string change(const std::string& identifier, const std::string& label) {
    return fakes::printed(fakes::nameOf("TopoSubnetwork", identifier)) +
           " [nativeEMSName=" + label + "]";
  }

  static Lines logged() { return fakes::Journal::linesOf({"TaDebug", "TaDebugWithPara"}); }

  NS_CORBA::CorbaTopoEventHandler handler_;
};

#endif
