#include "orb/requestcheck.h"

#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <utility>

#include "tests/unit/orb/Answers.h"
#include "tests/unit/orb/RawClient.h"
#include "tests/unit/orb/Servants.h"

namespace {

using orb::ObjectKey;
using orb::Request;
using orb_tests::Answering;
using orb_tests::RawClient;
using orb_tests::requestTo;

class RequestChecks : public testing::Test {
 protected:
  RequestChecks() {
    const PortableServer::POAManager_var manager = server_->rootPoa()->the_POAManager();
    manager->activate();
    published_ = object_->publish(servant_.in(), [this](const Request&) {
      guarded_ = true;
      return nullptr;
    });
  }

  // Returns the answer to a request for getLength of the object.
  std::string answerOf(const ObjectKey& key) {
    const RawClient client(server_->endpoint());
    return client.send(requestTo(key, "getLength").bytes()) ? client.receive() : "";
  }

  static bool isRefused(const std::string& answer) {
    return answer.find("IDL:omg.org/CORBA/NO_PERMISSION:1.0") != std::string::npos;
  }

  static void refuse(const ObjectKey&, const Request&) {
    throw CORBA::NO_PERMISSION(0, CORBA::COMPLETED_NO);
  }

  std::unique_ptr<orb::Server> server_ =
      orb::startServer(orb_tests::quickOptions(), {"127.0.0.1", 0}, nullptr);
  std::unique_ptr<orb::WellKnownObject> object_ = server_->wellKnownObject("Key");
  const PortableServer::ServantBase_var servant_ = new Answering([this] {
    called_ = true;
    return CORBA::ULong{7};
  });
  CORBA::Object_var published_;
  std::atomic<bool> guarded_{false};
  std::atomic<bool> called_{false};
};

TEST_F(RequestChecks, ReceiveTheObjectAndTheRequest) {
  std::promise<std::pair<ObjectKey, Request>> seen;
  orb::checkRequests(*server_, [&seen](const ObjectKey& key, const Request& request) {
    seen.set_value({key, request});
  });
  EXPECT_FALSE(isRefused(answerOf("Key")));
  const auto [key, request] = seen.get_future().get();
  EXPECT_EQ("Key", key);
  EXPECT_EQ("getLength", request.operation);
  EXPECT_EQ("127.0.0.1", request.peer.address);
  EXPECT_EQ(requestTo("Key", "getLength").bytes().size(), request.bytes);
  EXPECT_TRUE(called_);
}

TEST_F(RequestChecks, RejectARequestBeforeItsGuardAndObserver) {
  std::atomic<bool> observed{false};
  server_->observeRequests([&observed](const ObjectKey&) { observed = true; });
  orb::checkRequests(*server_, refuse);
  EXPECT_TRUE(isRefused(answerOf("Key")));
  EXPECT_FALSE(guarded_);
  EXPECT_FALSE(observed);
  EXPECT_FALSE(called_);
}

TEST_F(RequestChecks, RejectARequestBeforeItsArgumentsAreDecoded) {
  orb::checkRequests(*server_, refuse);
  const RawClient client(server_->endpoint());
  ASSERT_TRUE(client.send(requestTo("Key", "next_n").bytes()));  // without the argument
  EXPECT_TRUE(isRefused(client.receive()));
}

TEST_F(RequestChecks, CoverTheObjectsOfPoasAndUnknownObjects) {
  const PortableServer::ServantBase_var servant = new Answering(7);
  const PortableServer::ObjectId_var id = server_->rootPoa()->activate_object(servant.in());
  const CORBA::Object_var object = server_->rootPoa()->id_to_reference(id.in());
  const ObjectKey key = orb::objectKeyOf(object.in());
  EXPECT_FALSE(isRefused(answerOf(key)));
  orb::checkRequests(*server_, refuse);
  EXPECT_TRUE(isRefused(answerOf(key)));
  EXPECT_TRUE(isRefused(answerOf("NoSuchKey")));
}

// A LocateRequest has no operation.
TEST_F(RequestChecks, AreNotCalledForLocateRequests) {
  orb::checkRequests(*server_, refuse);
  const RawClient client(server_->endpoint());
  const std::string request =
      orb_tests::Message(0, orb_tests::kLocateRequest, false).number(1).octets("Key").bytes();
  ASSERT_TRUE(client.send(request));
  const std::string answer = client.receive();
  ASSERT_GE(answer.size(), 20U);
  EXPECT_EQ(static_cast<char>(orb_tests::kLocateReply), answer[7]);
  const std::string status = answer.substr(16, 4);
  EXPECT_NE(std::string::npos, status.find('\1'));  // OBJECT_HERE
  EXPECT_FALSE(called_);
}

TEST_F(RequestChecks, EndWithTheirRemoval) {
  orb::checkRequests(*server_, refuse);
  EXPECT_TRUE(isRefused(answerOf("Key")));
  orb::checkRequests(*server_, nullptr);
  EXPECT_FALSE(isRefused(answerOf("Key")));
  EXPECT_TRUE(called_);
}

}  // namespace
