// The end of objects, POAs and servers while clients do not read or send.

#include <gmock/gmock.h>

#include <future>
#include <mutex>
#include <vector>

#include "tests/unit/orb/RawClient.h"
#include "tests/unit/orb/Servants.h"

namespace {

using orb_tests::LargeReplies;
using orb_tests::RawClient;
using orb_tests::requestTo;
using testing::ContainsRegex;
using testing::HasSubstr;

constexpr std::chrono::seconds kMuchLessThanTheServeTimeout{20};

class Draining : public testing::Test {
 protected:
  static orb::Options options() {
    orb::Options options;
    options.drainGrace = std::chrono::milliseconds(1);
    return options;
  }

  // Returns after the call of the servant, whose reply does not fit into the socket buffers.
  static void askWithoutReading(const RawClient& client, const std::string& key,
                                LargeReplies* servant) {
    ASSERT_TRUE(client.send(requestTo(key, "next_n").number(1).bytes()));
    servant->asked().wait();
  }

  std::size_t shutDownConnections() {
    const std::lock_guard<std::mutex> lock(mutex_);
    return lines_.size();
  }

  void log(const std::string& line) {
    const std::lock_guard<std::mutex> lock(mutex_);
    EXPECT_THAT(line, ContainsRegex("connection from .*127.0.0.1:[0-9]+ "));
    EXPECT_THAT(line, HasSubstr("is shut down"));
    lines_.push_back(line);
    if (lines_.size() == 1) {
      firstLine_.set_value();
    }
  }

  // Whether the action ends within the grace period and a tolerance.
  template <typename Action>
  static bool isQuick(Action action) {
    const auto begin = std::chrono::steady_clock::now();
    action();
    return std::chrono::steady_clock::now() - begin < kMuchLessThanTheServeTimeout;
  }

  std::mutex mutex_;
  std::vector<std::string> lines_;  // guarded by mutex_
  std::promise<void> firstLine_;
  std::unique_ptr<orb::Server> server_ =
      orb::startServer(options(), {"127.0.0.1", 0}, [this](const std::string& line) { log(line); });
  std::unique_ptr<orb::WellKnownObject> object_ = server_->wellKnownObject("Key");
  const PortableServer::Servant_var<LargeReplies> servant_ = new LargeReplies;
};

TEST_F(Draining, EndsTheReplyToAClientThatDoesNotRead) {
  const CORBA::Object_var published = object_->publish(servant_.in());
  const RawClient client(server_->endpoint());
  askWithoutReading(client, "Key", servant_.in());
  EXPECT_TRUE(isQuick([this] { object_->retire(); }));
  EXPECT_EQ(1U, shutDownConnections());
}

TEST_F(Draining, EndsARequestWithIncompleteArguments) {
  const CORBA::Object_var published = object_->publish(servant_.in());
  const std::string whole = requestTo("Key", "_is_a").text(std::string(100000, 'x')).bytes();
  const RawClient client(server_->endpoint());
  ASSERT_TRUE(client.send(whole.substr(0, 60000)));
  const RawClient other(server_->endpoint());
  ASSERT_TRUE(other.send(requestTo("Key", "getLength").bytes()));
  EXPECT_TRUE(other.answer());
  EXPECT_TRUE(isQuick([this] { object_->retire(); }));
}

// getLength() blocks until it is released; the reply of next_n() exceeds the socket buffers.
class Blocking final : public POA_TopoManagementManager::NodeIterator_I {
 public:
  CORBA::Boolean next_n(CORBA::ULong count, TopoManagementManager::NodeList_T_out list) override {
    return lavish_->next_n(count, list);
  }
  CORBA::ULong getLength() override {
    entered_.set_value();
    released_.get_future().wait();
    return 7;
  }
  void destroy() override {}

  LargeReplies* lavish() { return lavish_.in(); }
  std::promise<void> entered_;
  std::promise<void> released_;

 private:
  const PortableServer::Servant_var<LargeReplies> lavish_ = new LargeReplies;
};

TEST_F(Draining, WaitsForARequestInItsServant) {
  const PortableServer::Servant_var<Blocking> blocking = new Blocking;
  const CORBA::Object_var published = object_->publish(blocking.in());
  const RawClient patient(server_->endpoint());
  ASSERT_TRUE(patient.send(requestTo("Key", "getLength").bytes()));
  blocking->entered_.get_future().wait();
  const RawClient stalled(server_->endpoint());
  askWithoutReading(stalled, "Key", blocking->lavish());
  auto retired = std::async(std::launch::async, [this] { object_->retire(); });
  firstLine_.get_future().wait();
  EXPECT_EQ(std::future_status::timeout, retired.wait_for(std::chrono::seconds(0)));
  blocking->released_.set_value();
  retired.get();
  EXPECT_TRUE(patient.answer());
  EXPECT_EQ(1U, shutDownConnections());
}

TEST_F(Draining, WaitsForARequestThatItsGuardBlocks) {
  std::promise<void> entered;
  std::promise<void> leave;
  const CORBA::Object_var published =
      object_->publish(servant_.in(), [&](const orb::Request& request) {
        if (request.operation == "getLength") {
          entered.set_value();
          leave.get_future().wait();
        }
        return nullptr;
      });
  const RawClient patient(server_->endpoint());
  ASSERT_TRUE(patient.send(requestTo("Key", "getLength").bytes()));
  entered.get_future().wait();
  const RawClient stalled(server_->endpoint());
  askWithoutReading(stalled, "Key", servant_.in());
  auto retired = std::async(std::launch::async, [this] { object_->retire(); });
  firstLine_.get_future().wait();
  leave.set_value();
  retired.get();
  EXPECT_THAT(patient.receive(), HasSubstr("IDL:omg.org/CORBA/TRANSIENT:1.0"));
  EXPECT_EQ(1U, shutDownConnections());
}

TEST_F(Draining, KeepsRequestsToOtherObjects) {
  const CORBA::Object_var published = object_->publish(servant_.in());
  const RawClient client(server_->endpoint());
  askWithoutReading(client, "Key", servant_.in());
  const auto otherObject = server_->wellKnownObject("Other");
  const PortableServer::Servant_var<LargeReplies> otherServant = new LargeReplies;
  const CORBA::Object_var otherPublished = otherObject->publish(otherServant.in());
  const RawClient other(server_->endpoint());
  askWithoutReading(other, "Other", otherServant.in());
  object_->retire();
  EXPECT_EQ(1U, shutDownConnections());
  otherObject->retire();
  EXPECT_EQ(2U, shutDownConnections());
}

TEST_F(Draining, EndsAPoaWithAClientThatDoesNotRead) {
  const CORBA::Object_var elsewhere = object_->publish(servant_.in());
  const RawClient unconcerned(server_->endpoint());
  askWithoutReading(unconcerned, "Key", servant_.in());
  const PortableServer::POA_var poa = server_->rootPoa()->create_POA(
      "poa", PortableServer::POAManager::_nil(), CORBA::PolicyList());
  const PortableServer::POAManager_var manager = poa->the_POAManager();
  manager->activate();
  const PortableServer::Servant_var<LargeReplies> servant = new LargeReplies;
  const PortableServer::ObjectId_var id = poa->activate_object(servant.in());
  const CORBA::Object_var reference = poa->id_to_reference(id.in());
  const RawClient client(server_->endpoint());
  askWithoutReading(client, orb::objectKeyOf(reference), servant.in());
  EXPECT_TRUE(isQuick([&poa] { orb::destroyPoa(poa.in()); }));
  EXPECT_EQ(1U, shutDownConnections());
  EXPECT_THROW(orb::destroyPoa(poa.in()), CORBA::OBJECT_NOT_EXIST);
}

TEST_F(Draining, EndsAServerWithClientsThatDoNotRead) {
  const PortableServer::POAManager_var manager = server_->rootPoa()->the_POAManager();
  manager->activate();
  const PortableServer::ObjectId_var id = server_->rootPoa()->activate_object(servant_.in());
  const CORBA::Object_var reference = server_->rootPoa()->id_to_reference(id.in());
  const RawClient client(server_->endpoint());
  askWithoutReading(client, orb::objectKeyOf(reference), servant_.in());
  object_.reset();
  EXPECT_TRUE(isQuick([this] { server_.reset(); }));
}

}  // namespace
