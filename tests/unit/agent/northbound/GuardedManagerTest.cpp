// The manager behind the admission of views: admitted operations, reservations, iterator sizes.

#include "agent/northbound/GuardedManager.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <future>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "agent/base/RequestLog.h"
#include "agent/northbound/Northbound.h"
#include "tests/support/Task.h"
#include "tests/unit/agent/support/CapturedLog.h"

namespace {

using agent::GuardedManager;
using agent::IteratorLimits;
using agent::IteratorRegistry;
using agent::ViewAdmission;
using agent::ViewGuard;
using agent::ViewKind;
using agent::ViewSize;
using std::chrono::milliseconds;
using topologicalLink::TopologicalLinkIterator_I_out;
using topologicalLink::TopologicalLinkIterator_I_var;
using topologicalLink::TopologicalLinkList_T_out;
using topologicalLink::TopologicalLinkList_T_var;
using TopoManagementManager::NodeIterator_I_out;
using TopoManagementManager::NodeIterator_I_var;
using TopoManagementManager::NodeList_T;
using TopoManagementManager::NodeList_T_out;
using TopoManagementManager::NodeList_T_var;

// A manager of a module that records the calls and runs the hooks of the test.
class RecordingManager final : public virtual POA_TopoManagementManager::TopoMgr_I {
 public:
  // A call with the arguments that identify the call; unused arguments keep their default.
  struct Call {
    std::string operation;
    std::string text{};
    bool unique = false;
    CORBA::ULong pairs = 0;
    CORBA::ULong howMany = 0;
  };

  void setNativeEMSName(const globaldefs::NVSList_T&, const char* name) override {
    calls.push_back({"setNativeEMSName", name});
  }
  void setUserLabel(const globaldefs::NVSList_T&, const char* label,
                    CORBA::Boolean unique) override {
    calls.push_back({"setUserLabel", label, unique});
  }
  void setOwner(const globaldefs::NVSList_T&, const char* owner) override {
    calls.push_back({"setOwner", owner});
    if (inSetter) {
      inSetter();
    }
  }
  void getCapabilities(common::CapabilityList_T_out capabilities) override {
    calls.push_back({"getCapabilities"});
    capabilities = new common::CapabilityList_T;
  }
  void setAdditionalInfo(const globaldefs::NVSList_T&, globaldefs::NVSList_T& info) override {
    calls.push_back({"setAdditionalInfo", "", false, info.length()});
    info.length(info.length() + storedPairs);
    if (inSetter) {
      inSetter();
    }
  }
  void getTopoSubnetworkViewInfo(CORBA::ULong howMany, NodeList_T_out list,
                                 NodeIterator_I_out) override {
    view<NodeList_T>("getTopoSubnetworkViewInfo", 0, howMany, list);
  }
  void getProtectSubnetworkViewInfo(CORBA::ULong howMany, NodeList_T_out list,
                                    NodeIterator_I_out) override {
    view<NodeList_T>("getProtectSubnetworkViewInfo", 0, howMany, list);
  }
  void getViewInfoByTopoSubnetwork(const globaldefs::NVSList_T& name, CORBA::ULong howMany,
                                   NodeList_T_out list, NodeIterator_I_out) override {
    view<NodeList_T>("getViewInfoByTopoSubnetwork", name.length(), howMany, list);
  }
  void getClockSourceSubnetworkViewInfo(CORBA::ULong howMany, NodeList_T_out list,
                                        NodeIterator_I_out) override {
    view<NodeList_T>("getClockSourceSubnetworkViewInfo", 0, howMany, list);
  }
  void getAllClockSourceViewlTopologicalLinks(CORBA::ULong howMany, TopologicalLinkList_T_out list,
                                              TopologicalLinkIterator_I_out) override {
    view<topologicalLink::TopologicalLinkList_T>("getAllClockSourceViewlTopologicalLinks", 0,
                                                 howMany, list);
  }

  std::vector<Call> calls;
  std::function<void()> inView;
  std::function<void()> inSetter;  // setOwner and setAdditionalInfo
  CORBA::ULong length = 0;         // of the list of a view
  CORBA::ULong storedPairs = 0;    // added by setAdditionalInfo to the pairs of the request

 private:
  template <typename List, typename ListOut>
  void view(const char* operation, CORBA::ULong pairs, CORBA::ULong howMany, ListOut& list) {
    calls.push_back({operation, "", false, pairs, howMany});
    list = new List;
    list.ptr()->length(length);
    if (inView) {
      inView();
    }
  }
};

bool operator==(const RecordingManager::Call& left, const RecordingManager::Call& right) {
  return left.operation == right.operation && left.text == right.text &&
         left.unique == right.unique && left.pairs == right.pairs && left.howMany == right.howMany;
}

void PrintTo(const RecordingManager::Call& call, std::ostream* out) {
  *out << call.operation << " text '" << call.text << "' unique " << call.unique << " pairs "
       << call.pairs << " howMany " << call.howMany;
}

// An iterator with a fixed number of remaining records.
class FakeIterator final : public virtual POA_TopoManagementManager::NodeIterator_I {
 public:
  explicit FakeIterator(CORBA::ULong left) : left_(left) {}

  CORBA::Boolean next_n(CORBA::ULong, NodeList_T_out) override { throw CORBA::NO_IMPLEMENT(); }
  CORBA::ULong getLength() override { return left_; }
  void destroy() override {}

 private:
  const CORBA::ULong left_;
};

globaldefs::NVSList_T elementName() {
  globaldefs::NVSList_T name;
  name.length(2);
  name[0].name = "EMS";
  name[0].value = "E";
  name[1].name = "ManagedElement";
  name[1].value = "1";
  return name;
}

class Guarded : public testing::Test {
 protected:
  static void SetUpTestSuite() { server_ = orb::startServer({}, {"127.0.0.1", 0}, nullptr); }
  static void TearDownTestSuite() { server_.reset(); }

  Guarded() {
    iterators_.open();
    manager_ = new RecordingManager;
    owner_ = manager_;
    guarded_ = new GuardedManager(*manager_, guard_);
    guardedOwner_ = guarded_;
  }

  void view(CORBA::ULong howMany) {
    NodeList_T_var list;
    NodeIterator_I_var iterator;
    guarded_->getTopoSubnetworkViewInfo(howMany, list.out(), iterator.out());
  }

  using NodesView = void (GuardedManager::*)(CORBA::ULong, NodeList_T_out, NodeIterator_I_out);

  void nodes(NodesView operation) {
    NodeList_T_var list;
    NodeIterator_I_var iterator;
    (guarded_->*operation)(7, list.out(), iterator.out());
  }

  // A call of each view, in the order of the interface.
  std::vector<std::function<void()>> allViews() {
    return {[this] { nodes(&GuardedManager::getTopoSubnetworkViewInfo); },
            [this] { nodes(&GuardedManager::getProtectSubnetworkViewInfo); },
            [this] {
              NodeList_T_var list;
              NodeIterator_I_var iterator;
              globaldefs::NVSList_T name;
              name.length(2);
              guarded_->getViewInfoByTopoSubnetwork(name, 7, list.out(), iterator.out());
            },
            [this] { nodes(&GuardedManager::getClockSourceSubnetworkViewInfo); },
            [this] {
              TopologicalLinkList_T_var list;
              TopologicalLinkIterator_I_var iterator;
              guarded_->getAllClockSourceViewlTopologicalLinks(7, list.out(), iterator.out());
            }};
  }

  static std::unique_ptr<orb::Server> server_;

  std::size_t free_ = 1000000;
  std::vector<std::size_t> asked_;
  std::vector<ViewKind> kinds_;
  IteratorRegistry::TimePoint now_{};
  ViewAdmission admission_{{1, 1000000, milliseconds(0)},
                           [this](std::size_t bytes) {
                             asked_.push_back(bytes);
                             return bytes <= free_;
                           },
                           std::chrono::steady_clock::now};
  IteratorRegistry iterators_{server_->rootPoa(), IteratorLimits{milliseconds(1000), 3, 1000000},
                              [this] { return now_; }};
  ViewAdmission information_{{1, 10000, milliseconds(0)},
                             [](std::size_t) { return true; },
                             std::chrono::steady_clock::now};
  const ViewGuard guard_{admission_, information_, iterators_, [this](ViewKind kind) {
                           kinds_.push_back(kind);
                           return ViewSize{10, 5000, 400};
                         }};
  RecordingManager* manager_ = nullptr;
  PortableServer::ServantBase_var owner_;
  GuardedManager* guarded_ = nullptr;
  PortableServer::ServantBase_var guardedOwner_;
};

std::unique_ptr<orb::Server> Guarded::server_;

TEST_F(Guarded, ForwardsEveryOperationToTheManager) {
  globaldefs::NVSList_T name;
  globaldefs::NVSList_T info;
  info.length(3);
  common::CapabilityList_T_var capabilities;
  guarded_->setNativeEMSName(name, "a");
  guarded_->setUserLabel(name, "b", true);
  guarded_->setOwner(name, "c");
  guarded_->getCapabilities(capabilities.out());
  guarded_->setAdditionalInfo(name, info);
  for (const std::function<void()>& call : allViews()) {
    call();
  }
  const std::vector<RecordingManager::Call> expected = {
      {"setNativeEMSName", "a"},
      {"setUserLabel", "b", true},
      {"setOwner", "c"},
      {"getCapabilities"},
      {"setAdditionalInfo", "", false, 3},
      {"getTopoSubnetworkViewInfo", "", false, 0, 7},
      {"getProtectSubnetworkViewInfo", "", false, 0, 7},
      {"getViewInfoByTopoSubnetwork", "", false, 2, 7},
      {"getClockSourceSubnetworkViewInfo", "", false, 0, 7},
      {"getAllClockSourceViewlTopologicalLinks", "", false, 0, 7}};
  EXPECT_EQ(expected, manager_->calls);
}

TEST_F(Guarded, RefusesEveryViewWithoutMemoryBeforeTheModuleRuns) {
  free_ = 100;
  for (const std::function<void()>& call : allViews()) {
    EXPECT_THROW(call(), CORBA::NO_RESOURCES);
  }
  EXPECT_TRUE(manager_->calls.empty());
}

TEST_F(Guarded, ForwardsSettersWithoutAnAdmission) {
  free_ = 0;
  guarded_->setOwner({}, "c");
  EXPECT_EQ((std::vector<RecordingManager::Call>{{"setOwner", "c"}}), manager_->calls);
  EXPECT_TRUE(asked_.empty());
}

TEST_F(Guarded, EstimatesEachViewByItsKind) {
  for (const std::function<void()>& call : allViews()) {
    call();
  }
  const std::vector<ViewKind> expected = {ViewKind::kNodes, ViewKind::kNodes, ViewKind::kNodes,
                                          ViewKind::kClockPositions, ViewKind::kClockLinks};
  EXPECT_EQ(expected, kinds_);
}

TEST_F(Guarded, ReservesResultWorkAndFirstBatch) {
  view(0);
  EXPECT_EQ(5400U, asked_.back());
  view(2);
  EXPECT_LE(6400U, asked_.back());
  EXPECT_GE(6410U, asked_.back());
  view(4000000000);
  EXPECT_LE(10400U, asked_.back());
  EXPECT_GE(10410U, asked_.back());
}

TEST_F(Guarded, ReleasesTheReservationOfAFailedView) {
  manager_->inView = [] { throw CORBA::INTERNAL(); };
  EXPECT_THROW(view(1), CORBA::INTERNAL);
  manager_->inView = nullptr;
  view(1);
}

TEST_F(Guarded, ComputesOneViewWhileTheReplyOfAnotherIsSent) {
  const std::shared_ptr<agent::ViewReply> reply = agent::ViewReply::begin();
  manager_->length = 10;
  view(10);
  EXPECT_NO_THROW(view(10));
}

// A request of a few bytes may have a reply with all stored information.
TEST_F(Guarded, RefusesAdditionalInformationWhileRepliesUseTheMemory) {
  globaldefs::NVSList_T info;
  {
    const std::shared_ptr<agent::ViewReply> reply = agent::ViewReply::begin();
    manager_->storedPairs = 1000;
    guarded_->setAdditionalInfo({}, info);
    globaldefs::NVSList_T none;
    EXPECT_THROW(guarded_->setAdditionalInfo({}, none), CORBA::NO_RESOURCES);
    EXPECT_NO_THROW(view(1));
  }
  EXPECT_NO_THROW(guarded_->setAdditionalInfo({}, info));
}

TEST_F(Guarded, ReleasesThePlaceOfAFailedSetAdditionalInfo) {
  globaldefs::NVSList_T info;
  manager_->inSetter = [] { throw CORBA::INTERNAL(); };
  EXPECT_THROW(guarded_->setAdditionalInfo({}, info), CORBA::INTERNAL);
  manager_->inSetter = nullptr;
  EXPECT_NO_THROW(guarded_->setAdditionalInfo({}, info));
}

// --- Iterators of a view.

TEST_F(Guarded, CountsTheRecordsOfAnIterator) {
  std::size_t bytes = 0;
  const PortableServer::ServantBase_var iterator = new FakeIterator(6);
  manager_->inView = [&] { bytes = agent::iteratorBytes(iterator.in()); };
  view(2);
  EXPECT_LE(4000U, bytes);
  EXPECT_GE(6000U, bytes);
}

TEST_F(Guarded, CountsNothingOutsideOfAView) {
  const PortableServer::ServantBase_var iterator = new FakeIterator(6);
  EXPECT_EQ(0U, agent::iteratorBytes(iterator.in()));
  view(2);
  EXPECT_EQ(0U, agent::iteratorBytes(iterator.in()));
}

TEST_F(Guarded, DoesNotReclaimIteratorsDuringTheirView) {
  manager_->inView = [this] {
    ASSERT_EQ(agent::kSuccess, iterators_.add(new FakeIterator(6), 0));
    now_ += milliseconds(1000);
    EXPECT_EQ(0U, iterators_.reclaimIdle());
  };
  view(2);
  now_ += milliseconds(1000);
  EXPECT_EQ(1U, iterators_.reclaimIdle());
}

// The module copies a batch of an iterator without an admission.
TEST(NorthboundViews, ReserveMemoryForACopyOfAllIterators) {
  const auto server = orb::startServer({}, {"127.0.0.1", 0}, nullptr);
  std::vector<std::size_t> asked;
  agent::ViewSetup setup;
  setup.sizeOf = [](ViewKind, bool) { return ViewSize{10, 5000, 400}; };
  setup.allows = [&asked](std::size_t bytes) {
    asked.push_back(bytes);
    return true;
  };
  agent::Northbound northbound(*server, "EMS", false, {}, setup);
  northbound.open();
  northbound.managers().serve("A", new RecordingManager);
  ASSERT_EQ(agent::kSuccess, northbound.iterators().add(new FakeIterator(6), 3000));
  const CORBA::Object_var reference = northbound.managers().reference("A");
  const auto manager =
      TopoManagementManager::TopoMgr_I_var(TopoManagementManager::TopoMgr_I::_narrow(reference));
  NodeList_T_var list;
  NodeIterator_I_var iterator;
  manager->getTopoSubnetworkViewInfo(0, list.out(), iterator.out());
  EXPECT_EQ(std::vector<std::size_t>{8400}, asked);
  northbound.retire();
}

TEST_F(Guarded, LogsChangesAtLevelTwo) {
  const globaldefs::NVSList_T name = elementName();
  globaldefs::NVSList_T information;
  support::CapturedLog log(agent::kLogEvents);
  guarded_->setNativeEMSName(name, "n");
  guarded_->setUserLabel(name, "l", true);
  guarded_->setOwner(name, "o");
  guarded_->setAdditionalInfo(name, information);
  view(0);
  const std::string text = log.text();
  for (const char* operation :
       {"setNativeEMSName", "setUserLabel", "setOwner", "setAdditionalInfo"}) {
    EXPECT_THAT(text, testing::HasSubstr(std::string("this process: ") + operation +
                                         " {EMS=E, ManagedElement=1}\n"));
  }
  EXPECT_EQ(4, std::count(text.begin(), text.end(), '\n'));
}

TEST_F(Guarded, LogsRefusalsAtLevelThreeAndPassesThem) {
  const auto refuse = [] {
    throw globaldefs::ProcessingFailureException(globaldefs::EXCPT_INVALID_INPUT, "no such name");
  };
  manager_->inSetter = refuse;
  manager_->inView = refuse;
  support::CapturedLog log(agent::kLogTraces);
  EXPECT_THROW(guarded_->setOwner(elementName(), "o"), globaldefs::ProcessingFailureException);
  EXPECT_THROW(view(0), globaldefs::ProcessingFailureException);
  const std::string text = log.text();
  EXPECT_THAT(text, testing::HasSubstr("this process: setOwner is refused: no such name\n"));
  EXPECT_THAT(text, testing::HasSubstr(
                        "this process: getTopoSubnetworkViewInfo is refused: no such name\n"));
  EXPECT_THAT(text, testing::Not(testing::HasSubstr("ManagedElement")));
}

TEST_F(Guarded, RecordsEveryFailureOfAChange) {
  std::vector<agent::RequestRecord> records;
  agent::setRequestRecorder(
      [&records](const agent::RequestRecord& record) { records.push_back(record); });
  manager_->inSetter = [] { throw 7; };
  EXPECT_THROW(guarded_->setOwner(elementName(), "o"), int);
  manager_->inSetter = nullptr;
  {
    const std::shared_ptr<agent::ViewReply> reply = agent::ViewReply::begin();
    manager_->storedPairs = 1000;
    globaldefs::NVSList_T info;
    guarded_->setAdditionalInfo(elementName(), info);
    EXPECT_THROW(guarded_->setAdditionalInfo(elementName(), info), CORBA::NO_RESOURCES);
  }
  agent::setRequestRecorder(nullptr);
  ASSERT_EQ(3U, records.size());
  EXPECT_EQ(agent::RequestRecord::Outcome::kFailed, records[0].outcome);
  EXPECT_EQ("an exception of an unknown type", records[0].reason);
  EXPECT_EQ(agent::RequestRecord::Outcome::kDone, records[1].outcome);
  EXPECT_EQ(agent::RequestRecord::Outcome::kFailed, records[2].outcome);
  EXPECT_EQ("setAdditionalInfo", records[2].operation);
}

TEST(NorthboundSetters, WaitingForTheirAdmissionAreRejectedByRetire) {
  const auto server = orb::startServer({}, {"127.0.0.1", 0}, nullptr);
  agent::ViewSetup setup;
  setup.limits.views = 1;
  agent::Northbound northbound(*server, "EMS", false, {}, setup);
  northbound.open();
  std::promise<void> runs;
  std::promise<void> mayEnd;
  auto* const servant = new RecordingManager;
  servant->inSetter = [&] {
    runs.set_value();
    mayEnd.get_future().wait();
  };
  northbound.managers().serve("A", servant);
  const CORBA::Object_var reference = northbound.managers().reference("A");
  const auto manager =
      TopoManagementManager::TopoMgr_I_var(TopoManagementManager::TopoMgr_I::_narrow(reference));
  const auto set = [&manager] {
    globaldefs::NVSList_T information;
    manager->setAdditionalInfo({}, information);
  };
  support::Task running(set);
  runs.get_future().wait();
  support::Task waiting(set);
  EXPECT_TRUE(waiting.waits());
  support::Task retiring([&northbound] { northbound.retire(); });
  EXPECT_THROW(waiting.get(), CORBA::TRANSIENT);
  mayEnd.set_value();
  EXPECT_NO_THROW(running.get());
  retiring.get();
}

}  // namespace
