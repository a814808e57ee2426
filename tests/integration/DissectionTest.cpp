// A second implementation of GIOP reads the messages of a session: tshark, from a capture on the
// loopback. The tests are skipped without tshark, and where capturing is not allowed.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "orb/idl/TopoManagementManager.h"
#include "orb/orb.h"
#include "tests/integration/Programs.h"

namespace {

using integration::RunningAgent;
using support::Ended;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::IsSupersetOf;
using Words = std::vector<std::string>;

// A loopback address that no other test uses at the same time.
std::string ownAddress() {
  const int id = getpid();
  return "127." + std::to_string(64 + (id >> 16) % 128) + '.' + std::to_string(id >> 8 & 255) +
         '.' + std::to_string(id & 255);
}

// The packets from and to an address, in a file. Thread-safety: none. Owns the capturing program.
class Capture {
 public:
  Capture(const std::string& address, const std::string& file)
      : file_(file),
        program_("/bin/sh", {"-c", "exec \"$0\" \"$@\" 2>&1", TOPO_DUMPCAP, "-q", "-i", "lo", "-f",
                             "tcp and host " + address, "-w", file}) {
    // The program prints the name of the file when it captures.
    std::string line = program_.readLine();
    while (!line.empty() && line.rfind("File: ", 0) != 0) {
      refusal_ += line + '\n';
      line = program_.readLine();
    }
    isRunning_ = !line.empty();
  }

  bool isRunning() const { return isRunning_; }
  const std::string& refusal() const { return refusal_; }

  // Ends the capture when the file contains the text. Returns false after 30 seconds without it.
  bool endAfter(const std::string& text) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    bool isComplete = false;
    while (!isComplete && std::chrono::steady_clock::now() < end) {
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
      isComplete = support::readFile(file_).find(text) != std::string::npos;
    }
    program_.send(SIGINT);
    program_.wait();
    return isComplete;
  }

 private:
  const std::string file_;
  support::Process program_;
  std::string refusal_;
  bool isRunning_ = false;
};

Words split(const std::string& text, char separator) {
  Words parts;
  std::istringstream stream(text);
  for (std::string part; std::getline(stream, part, separator);) {
    parts.push_back(part);
  }
  return parts;
}

// Returns one line with the fields of each packet that the filter selects. tshark would use the
// decoder giop-cosnaming for every operation with the name of an operation of the naming service.
Words dissected(const std::string& file, const std::string& filter, const Words& fields) {
  // -2: with a second pass tshark knows which packets are parts of a message.
  Words arguments = {"-n", "-2", "-r", file, "-Y", filter, "-T", "fields"};
  arguments.insert(arguments.end(), {"--disable-protocol", "giop-cosnaming"});
  for (const std::string& field : fields) {
    arguments.insert(arguments.end(), {"-e", field});
  }
  const Ended ended = support::run(TOPO_TSHARK, arguments);
  EXPECT_EQ(0, ended.status) << ended.err;
  return split(ended.out, '\n');
}

// The values of a field. A packet with several messages has a comma between their values.
std::set<std::string> valuesOf(const std::string& file, const std::string& field) {
  std::set<std::string> values;
  for (const std::string& line : dissected(file, "giop", {field})) {
    const Words parts = split(line, ',');
    values.insert(parts.begin(), parts.end());
  }
  return values;
}

// The connections and ids of all messages of a type.
std::set<std::pair<std::string, std::string>> idsOf(const std::string& file,
                                                    const std::string& type) {
  std::set<std::pair<std::string, std::string>> ids;
  for (const std::string& line :
       dissected(file, "giop.type == " + type, {"tcp.stream", "giop.request_id"})) {
    const std::size_t tab = line.find('\t');
    for (const std::string& id : split(line.substr(tab + 1), ',')) {
      ids.emplace(line.substr(0, tab), id);
    }
  }
  return ids;
}

class Dissection : public testing::Test {
 protected:
  void SetUp() override {
    if (access(TOPO_DUMPCAP, X_OK) != 0 || access(TOPO_TSHARK, X_OK) != 0) {
      GTEST_SKIP() << "tshark is missing";
    }
  }

  // Runs topoctl and returns its status.
  static int run(const RunningAgent& agent, Words words) {
    words.insert(words.begin(), {"--ior-file", agent.iorFile()});
    return integration::runTopoctl(words).status;
  }

  // Calls an iterator that has ended; the reply is a system exception.
  static void callEndedIterator(const RunningAgent& agent) {
    const auto client = orb::startClient({});
    const CORBA::Object_var object = client->get()->string_to_object(agent.reference().c_str());
    const TopoManagementManager::TopoMgr_I_var manager =
        TopoManagementManager::TopoMgr_I::_narrow(object);
    TopoManagementManager::NodeList_T_var nodes;
    TopoManagementManager::NodeIterator_I_var iterator;
    manager->getTopoSubnetworkViewInfo(1, nodes.out(), iterator.out());
    iterator->destroy();
    EXPECT_THROW(iterator->getLength(), CORBA::OBJECT_NOT_EXIST);
  }

  // Makes a session: views in batches, changes, both kinds of exceptions, and notifications.
  void callAll(const RunningAgent& agent) const {
    support::Process watcher(TOPOCTL, {"--ior-file", agent.iorFile(), "--format", "json", "watch",
                                       "--listen", address_});
    ASSERT_THAT(watcher.readLine(), HasSubstr("watching"));
    for (const char* const view : {"topo", "protect", "clocks", "clock-links"}) {
      EXPECT_EQ(0, run(agent, {"--how-many", "5", view}));
    }
    EXPECT_EQ(0, run(agent, {"below", "TopoSubnetwork=Europe"}));
    EXPECT_EQ(0, run(agent, {"node", "create", "new", "--name", "Ω"}));
    EXPECT_THAT(watcher.readLine(), HasSubstr("new"));
    // A request of several TCP segments.
    EXPECT_EQ(0,
              run(agent, {"set", "info", "TopoSubnetwork=new", "a=" + std::string(100000, 'x')}));
    EXPECT_EQ(0, run(agent, {"set", "owner", "TopoSubnetwork=new", "me"}));
    EXPECT_EQ(0, run(agent, {"get", "TopoSubnetwork=new"}));
    EXPECT_EQ(0, run(agent, {"node", "delete", "new"}));
    EXPECT_THAT(watcher.readLine(), HasSubstr("new"));
    EXPECT_EQ(0, run(agent, {"status"}));
    callEndedIterator(agent);
    EXPECT_EQ(3, run(agent, {"get", "TopoSubnetwork=the last one"}));
  }

  const std::string address_ = ownAddress();
  const support::TemporaryDirectory directory_;
};

TEST_F(Dissection, FindsNoErrorInAnyMessageOfASession) {
  const std::string file = directory_.file("session.pcapng");
  Capture capture(address_, file);
  if (!capture.isRunning()) {
    GTEST_SKIP() << "capturing is not allowed: " << capture.refusal();
  }
  const RunningAgent agent({"--network", TOPO_NETWORKS "/backbone.json"},
                           ":memory:", address_ + ":0");
  callAll(agent);
  ASSERT_TRUE(capture.endAfter("TopoSubnetwork=the last one"));  // the reason in the last reply

  // Every packet with data is a message or a part of a message.
  EXPECT_THAT(dissected(file, "tcp.len > 0 && !giop && !tcp.reassembled_in", {"frame.number"}),
              IsEmpty());
  EXPECT_THAT(dissected(file, "_ws.malformed || (giop && _ws.expert.severity >= 8388608)",
                        {"frame.number", "_ws.expert.message"}),
              IsEmpty());
  EXPECT_THAT(
      valuesOf(file, "giop.request_op"),
      IsSupersetOf({"getTopoSubnetworkViewInfo", "getViewInfoByTopoSubnetwork", "next_n",
                    "createNode", "setOwner", "getObject", "getLength", "push_structured_event"}));
  EXPECT_THAT(valuesOf(file, "giop.replystatus"), IsSupersetOf({"0", "1", "2"}));
  EXPECT_EQ(idsOf(file, "0"), idsOf(file, "1"));
}

}  // namespace
