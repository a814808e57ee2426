// The sample host of examples/host, built from the installed tree and operated by lines.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "tests/integration/Listeners.h"
#include "tests/support/Process.h"

namespace {

using integration::Client;
using integration::Consumer;
using integration::Heard;
using support::Process;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

// A running sample host that pushes its notifications to consumer().
class SampleHost {
 public:
  explicit SampleHost(const std::string& program, const std::string& module = TOPO_INSTALLED_MODULE)
      : process_(program, {module, referenceOf(consumer_)}, {}, Process::Input::kPipe) {
    ready_ = process_.readLine();
  }

  // The answer to a request.
  std::string ask(const std::string& request) {
    process_.writeLine(request);
    return process_.readLine();
  }

  TopoManagementManager::TopoMgr_I_var manager() {
    const std::string reference = ready_.substr(ready_.find(' ') + 1);
    const CORBA::Object_var object = client_.server().get()->string_to_object(reference.c_str());
    return TopoManagementManager::TopoMgr_I::_unchecked_narrow(object);
  }

  // The number of mappings of the module. Linux shows an unmapped file at once.
  std::size_t mappings() const {
    std::ifstream maps("/proc/" + std::to_string(process_.pid()) + "/maps");
    std::size_t count = 0;
    for (std::string line; std::getline(maps, line);) {
      count += line.find("libzu_corba_topo.so") != std::string::npos ? 1 : 0;
    }
    return count;
  }

  const std::string& ready() const { return ready_; }
  Consumer& consumer() { return consumer_; }
  Process& process() { return process_; }

 private:
  std::string referenceOf(const Consumer& consumer) {
    const CosNotifyComm::StructuredPushConsumer_var reference = consumer.reference();
    return CORBA::String_var(client_.server().get()->object_to_string(reference)).in();
  }

  Client client_;
  Consumer consumer_{client_};
  Process process_;
  std::string ready_;
};

class SampleHosts : public testing::Test {
 protected:
  void SetUp() override {
    if (*TOPO_SANITIZED != '\0') {
      GTEST_SKIP() << "the sample host is tested in builds without sanitizers";
    }
  }
};

std::vector<std::string> namesOf(const TopoManagementManager::NodeList_T& nodes) {
  std::vector<std::string> names;
  for (CORBA::ULong i = 0; i < nodes.length(); ++i) {
    names.emplace_back(nodes[i].nativeEMSName.in());
  }
  return names;
}

std::vector<std::string> describe(const std::vector<Heard>& notifications) {
  std::vector<std::string> texts;
  for (const Heard& each : notifications) {
    texts.push_back(each.type + " " + each.object + " " + each.name);
  }
  return texts;
}

TEST_F(SampleHosts, ServeTheirNodesAsUtf8) {
  SampleHost host(TOPO_SAMPLE_HOST);
  TopoManagementManager::NodeList_T_var nodes;
  TopoManagementManager::NodeIterator_I_var iterator;
  host.manager()->getTopoSubnetworkViewInfo(100, nodes, iterator);
  EXPECT_THAT(namesOf(nodes), ElementsAre("Europe", "M\xc3\xbcnchen", "router 1", "amplifier 2",
                                          "controller 3", "router 4"));
  EXPECT_TRUE(CORBA::is_nil(iterator));
}

TEST_F(SampleHosts, ServeTheRestOfAViewThroughAnIterator) {
  SampleHost host(TOPO_SAMPLE_HOST);
  TopoManagementManager::NodeList_T_var nodes;
  TopoManagementManager::NodeIterator_I_var iterator;
  host.manager()->getTopoSubnetworkViewInfo(4, nodes, iterator);
  ASSERT_FALSE(CORBA::is_nil(iterator));
  EXPECT_FALSE(iterator->next_n(100, nodes));
  EXPECT_THAT(namesOf(nodes), ElementsAre("controller 3", "router 4"));
  EXPECT_THROW(iterator->next_n(100, nodes), CORBA::OBJECT_NOT_EXIST);
}

TEST_F(SampleHosts, SendANotificationOfEachEvent) {
  SampleHost host(TOPO_SAMPLE_HOST);
  EXPECT_EQ(host.ask("create NE=9"), "ok");
  EXPECT_EQ(host.ask("change NE=9"), "ok");
  EXPECT_EQ(host.ask("delete NE=9"), "ok");
  EXPECT_THAT(describe(host.consumer().inbox().waitForCount(3)),
              ElementsAre("NT_OBJECT_CREATION ManagedElement=9 node NE=9",
                          "NT_ATTRIBUTE_VALUE_CHANGE ManagedElement=9 node NE=9 (renamed)",
                          "NT_OBJECT_DELETION ManagedElement=9 "));
}

TEST_F(SampleHosts, NameASubnetworkWhoseIdBeginsWithAMinusSign) {
  SampleHost host(TOPO_SAMPLE_HOST);
  EXPECT_EQ(host.ask("create -1"), "ok");
  EXPECT_THAT(describe(host.consumer().inbox().waitForCount(1)),
              ElementsAre("NT_OBJECT_CREATION TopoSubnetwork=-1 node -1"));
}

TEST_F(SampleHosts, MapTheModuleOnceAfterTwentyReloads) {
  SampleHost host(TOPO_SAMPLE_HOST);
  const std::size_t once = host.mappings();
  EXPECT_GT(once, 0U);
  for (int i = 0; i < 20; ++i) {
    ASSERT_EQ(host.ask("unload"), "ok");
    ASSERT_EQ(host.mappings(), 0U);
    ASSERT_THAT(host.ask("load"), StartsWith("ok IOR:"));
  }
  EXPECT_EQ(host.mappings(), once);
  EXPECT_EQ(host.ask("create NE=9"), "ok");
  EXPECT_EQ(host.consumer().inbox().waitForCount(1).size(), 1U);
}

TEST_F(SampleHosts, KeepTheReferenceOfTheManagerDuringAReload) {
  SampleHost host(TOPO_SAMPLE_HOST);
  const TopoManagementManager::TopoMgr_I_var manager = host.manager();
  common::CapabilityList_T_var capabilities;
  ASSERT_EQ(host.ask("unload"), "ok");
  EXPECT_THROW(manager->getCapabilities(capabilities), CORBA::OBJECT_NOT_EXIST);
  ASSERT_THAT(host.ask("load"), StartsWith("ok IOR:"));
  manager->getCapabilities(capabilities);
  EXPECT_GT(capabilities->length(), 0U);
}

TEST_F(SampleHosts, RecoverFromAFailedInit) {
  SampleHost host(TOPO_FAILING_SAMPLE_HOST);
  const std::size_t once = host.mappings();
  EXPECT_EQ(host.ask("unload"), "ok");
  EXPECT_EQ(host.ask("load"),
            "failed the module cannot be loaded: its init failed with code 77: no network");
  EXPECT_EQ(host.mappings(), 0U);
  EXPECT_EQ(host.ask("create NE=8"), "ok");  // no subscription of the unmapped module is left
  EXPECT_THAT(host.ask("load"), StartsWith("ok IOR:"));
  EXPECT_EQ(host.mappings(), once);
  EXPECT_EQ(host.ask("create NE=9"), "ok");
  EXPECT_THAT(describe(host.consumer().inbox().waitForCount(1)),
              ElementsAre("NT_OBJECT_CREATION ManagedElement=9 node NE=9"));
}

TEST_F(SampleHosts, AnswerARequestThatFailsWithTheReason) {
  SampleHost host(TOPO_SAMPLE_HOST);
  EXPECT_EQ(host.ask("delete NE=9"), "failed no node \"NE=9\"");
  EXPECT_EQ(host.ask("change"), "failed no node \"\"");
  EXPECT_EQ(host.ask("create muc"), "failed the id cannot be used");
  EXPECT_EQ(host.ask("load"), "failed the module is loaded already");
  EXPECT_EQ(host.ask("reload"), "failed unknown request");
  EXPECT_EQ(host.ask("unload now"), "failed unknown request");
  EXPECT_GT(host.mappings(), 0U);
}

TEST_F(SampleHosts, RefuseIdsThatNoNodeMayHave) {
  SampleHost host(TOPO_SAMPLE_HOST);
  EXPECT_EQ(host.ask("create 0"), "failed the id cannot be used");
  EXPECT_EQ(host.ask("create QNMAP_PHY_SUBMAP"), "failed the id cannot be used");
}

TEST_F(SampleHosts, EndWithStatus0AfterQuit) {
  SampleHost host(TOPO_SAMPLE_HOST);
  EXPECT_EQ(host.ask("quit"), "ok");
  EXPECT_EQ(host.process().wait().status, 0);
}

TEST_F(SampleHosts, KeepServingAfterAQuitWithAnArgument) {
  SampleHost host(TOPO_SAMPLE_HOST);
  EXPECT_EQ(host.ask("quit now"), "failed unknown request");
  EXPECT_EQ(host.ask("create NE=9"), "ok");
}

// The option is the same for all ORBs.
TEST_F(SampleHosts, TakeOptionsOfTheOrbBeforeTheModule) {
  const std::vector<std::string> option = {"-ORBInitRef", "Any=corbaloc::127.0.0.1:1/Any"};
  Process host(TOPO_SAMPLE_HOST, {option[0], option[1], TOPO_INSTALLED_MODULE}, {},
               Process::Input::kPipe);
  EXPECT_THAT(host.readLine(), StartsWith("ready IOR:"));
  host.closeInput();
  EXPECT_EQ(host.wait().status, 0);
  EXPECT_THAT(support::run(TOPO_SAMPLE_HOST, option).err, StartsWith("usage: "));
}

TEST_F(SampleHosts, RefuseAConsumerThatIsNoReference) {
  const support::Ended ended = support::run(TOPO_SAMPLE_HOST, {TOPO_INSTALLED_MODULE, "garbage"});
  EXPECT_EQ(ended.status, 1);
  EXPECT_EQ(ended.err, "the consumer is no reference\n");
}

TEST_F(SampleHosts, EndWithStatus0AtTheEndOfTheInput) {
  SampleHost host(TOPO_SAMPLE_HOST);
  host.process().closeInput();
  EXPECT_EQ(host.process().wait().status, 0);
}

TEST_F(SampleHosts, SayWhyAFileCannotBeMapped) {
  SampleHost host(TOPO_SAMPLE_HOST, "/nonexistent/libmodule.so");
  EXPECT_THAT(host.ready(), IsEmpty());
  const support::Ended ended = host.process().wait();
  EXPECT_EQ(ended.status, 1);
  EXPECT_THAT(ended.err, HasSubstr("libmodule.so: cannot open shared object file"));
}

}  // namespace
