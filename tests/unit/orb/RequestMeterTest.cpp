// Tests of the meter of requests.

#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <vector>

#include "tests/unit/orb/RawClient.h"
#include "tests/unit/orb/Servants.h"

namespace {

using orb_tests::Answering;
using orb_tests::RawClient;
using orb_tests::requestTo;

struct Measured {
  std::string operation;
  std::string exception;  // "": none
  bool isSystemException = false;
};

class RequestMeters : public testing::Test {
 protected:
  // Sends a request and returns what the meter was called with.
  Measured ask(const std::string& key, const std::string& operation) {
    const RawClient client(server_->endpoints().front());
    EXPECT_TRUE(client.send(requestTo(key, operation).bytes()));
    EXPECT_TRUE(client.answer());
    return next();
  }

  Measured next() {
    std::unique_lock<std::mutex> lock(mutex_);
    EXPECT_TRUE(
        changed_.wait_for(lock, std::chrono::seconds(20), [this] { return !measured_.empty(); }));
    Measured first = measured_.empty() ? Measured() : measured_.front();
    measured_.clear();
    return first;
  }

  orb::Options options() {
    orb::Options options = orb_tests::quickOptions();
    options.maxRequestBytes = 8192;
    options.requestMeter = [this](const orb::FinishedRequest& request) {
      const std::lock_guard<std::mutex> lock(mutex_);
      EXPECT_LE(0, request.duration.count());
      measured_.push_back({request.operation, request.exception == nullptr ? "" : request.exception,
                           request.isSystemException});
      changed_.notify_one();
    };
    return options;
  }

  std::mutex mutex_;
  std::condition_variable changed_;
  std::vector<Measured> measured_;
  std::unique_ptr<orb::Server> server_ = orb::startServer(options(), {"127.0.0.1", 0}, nullptr);
  std::unique_ptr<orb::WellKnownObject> object_ = server_->wellKnownObject("Key");
  std::function<CORBA::ULong()> answer_ = [] { return 7U; };
  const PortableServer::ServantBase_var servant_ = new Answering([this] { return answer_(); });
};

TEST_F(RequestMeters, ReceiveARequestWithAReply) {
  const CORBA::Object_var published = object_->publish(servant_.in());
  const Measured measured = ask("Key", "getLength");
  EXPECT_EQ("getLength", measured.operation);
  EXPECT_EQ("", measured.exception);
}

TEST_F(RequestMeters, ReceiveTheNameOfASystemException) {
  const CORBA::Object_var published = object_->publish(servant_.in());
  answer_ = []() -> CORBA::ULong { throw CORBA::NO_RESOURCES(0, CORBA::COMPLETED_NO); };
  const Measured measured = ask("Key", "getLength");
  EXPECT_EQ("NO_RESOURCES", measured.exception);
  EXPECT_TRUE(measured.isSystemException);
}

TEST_F(RequestMeters, ReceiveTheNameOfAUserException) {
  const CORBA::Object_var published = object_->publish(servant_.in());
  answer_ = []() -> CORBA::ULong {
    throw globaldefs::ProcessingFailureException(globaldefs::EXCPT_INTERNAL_ERROR, "");
  };
  const Measured measured = ask("Key", "getLength");
  EXPECT_EQ("ProcessingFailureException", measured.exception);
  EXPECT_FALSE(measured.isSystemException);
}

TEST_F(RequestMeters, ReceiveARequestThatItsGuardRejects) {
  const CORBA::Object_var published =
      object_->publish(servant_.in(), [](const orb::Request&) -> std::shared_ptr<void> {
        throw CORBA::NO_PERMISSION(0, CORBA::COMPLETED_NO);
      });
  EXPECT_EQ("NO_PERMISSION", ask("Key", "getLength").exception);
}

TEST_F(RequestMeters, ReceiveRequestsToUnknownObjectsAndOperations) {
  const CORBA::Object_var published = object_->publish(servant_.in());
  EXPECT_EQ("OBJECT_NOT_EXIST", ask("Unknown", "getLength").exception);
  EXPECT_EQ("BAD_OPERATION", ask("Key", "unknown").exception);
}

TEST_F(RequestMeters, ReceiveARequestThatIsTooLarge) {
  const CORBA::Object_var published = object_->publish(servant_.in());
  const RawClient client(server_->endpoints().front());
  ASSERT_TRUE(client.send(requestTo("Key", "getLength").octets(std::string(20000, 'x')).bytes()));
  EXPECT_TRUE(client.answer());
  EXPECT_EQ("MARSHAL", next().exception);
}

TEST_F(RequestMeters, DoNotReceiveARequestWithoutReply) {
  const CORBA::Object_var published = object_->publish(servant_.in());
  const RawClient client(server_->endpoints().front());
  std::string oneway = requestTo("Key", "getLength").bytes();
  oneway[20] = 0;  // no reply expected
  ASSERT_TRUE(client.send(oneway));
  ASSERT_TRUE(client.send(requestTo("Key", "_non_existent").bytes()));
  EXPECT_TRUE(client.answer());
  EXPECT_EQ("_non_existent", next().operation);
}

}  // namespace
