// The entry in a naming service: bound at the start, kept while the agent runs, removed at the end.

#include "agent/northbound/CosNamingEntry.h"

#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <system_error>

#include "tests/support/NoThreads.h"
#include "tests/support/ResolvingNames.h"

namespace {

using agent::CosNamingEntry;
using agent::NamingError;

// Keeps bindings in memory. Thread-safety: any thread.
class Bindings final : public support::ResolvingNames {
 public:
  void bind(const CosNaming::Name& name, CORBA::Object_ptr object) override {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (!bound_.try_emplace(name[0].id.in(), CORBA::Object::_duplicate(object)).second) {
      throw CosNaming::NamingContext::AlreadyBound();
    }
    changed_.notify_all();
  }

  void rebind(const CosNaming::Name& name, CORBA::Object_ptr object) override {
    const std::lock_guard<std::mutex> lock(mutex_);
    bound_[name[0].id.in()] = CORBA::Object::_duplicate(object);
    changed_.notify_all();
  }

  CORBA::Object_ptr resolve(const CosNaming::Name& name) override {
    const std::lock_guard<std::mutex> lock(mutex_);
    ++resolves_;
    changed_.notify_all();
    if (fails_) {
      throw CORBA::NO_RESOURCES();
    }
    const auto found = bound_.find(name[0].id.in());
    if (found == bound_.end()) {
      throw CosNaming::NamingContext::NotFound(CosNaming::NamingContext::missing_node, {});
    }
    return CORBA::Object::_duplicate(found->second);
  }

  CORBA::Object_ptr resolve_str(const char*) override { throw CORBA::NO_IMPLEMENT(); }

  void unbind(const CosNaming::Name& name) override {
    const std::lock_guard<std::mutex> lock(mutex_);
    bound_.erase(name[0].id.in());
  }

  // Forgets every binding, as a naming service that has lost its data.
  void lose() {
    const std::lock_guard<std::mutex> lock(mutex_);
    bound_.clear();
  }

  // While true, resolve() throws NO_RESOURCES.
  void fail(bool fails) {
    const std::lock_guard<std::mutex> lock(mutex_);
    fails_ = fails;
  }

  CORBA::Object_var objectOf(const std::string& id) {
    const std::lock_guard<std::mutex> lock(mutex_);
    const auto found = bound_.find(id);
    return found == bound_.end() ? CORBA::Object::_nil() : CORBA::Object::_duplicate(found->second);
  }

  // Waits until the name is bound.
  bool becomesBound(const std::string& id) {
    return becomes([&] { return bound_.count(id) == 1; });
  }

  // Waits for this number of resolves from now on.
  bool isResolved(int times) {
    std::optional<int> wanted;
    return becomes([&] {
      wanted = wanted.value_or(resolves_ + times);
      return resolves_ >= *wanted;
    });
  }

 private:
  bool becomes(const std::function<bool()>& state) {
    std::unique_lock<std::mutex> lock(mutex_);
    return changed_.wait_for(lock, std::chrono::seconds(60), state);
  }

  std::mutex mutex_;
  std::condition_variable changed_;
  std::map<std::string, CORBA::Object_var> bound_;  // guarded by mutex_
  int resolves_ = 0;                                // guarded by mutex_
  bool fails_ = false;                              // guarded by mutex_
};

class CosNamingEntries : public testing::Test {
 protected:
  ~CosNamingEntries() override {
    entry_.reset();
    place_->retire();
  }

  void bind(std::chrono::milliseconds checkInterval = std::chrono::milliseconds(1)) {
    entry_.emplace(
        server_->get(), reference(), "Manager", object_, [] { return false; }, checkInterval);
  }

  std::string reference() {
    return "corbaloc:iiop:1.2@" + orb::format(server_->endpoint()) + "/Names";
  }

  bool isOurs() { return object_->_is_equivalent(names_->objectOf("Manager")); }

  const std::unique_ptr<orb::Server> server_ = orb::startServer({}, {"127.0.0.1", 0}, nullptr);
  const std::unique_ptr<orb::WellKnownObject> place_ = server_->wellKnownObject("Names");
  Bindings* const names_ = new Bindings;
  const PortableServer::ServantBase_var namesOwner_{names_};
  const CORBA::Object_var object_ = place_->publish(names_);
  const CORBA::Object_var other_ = orb::objectBeside(server_->get(), object_, "Other");
  std::optional<CosNamingEntry> entry_;
};

TEST_F(CosNamingEntries, AreBoundByTheConstructorAndRemovedByTheDestructor) {
  bind(std::chrono::hours(1));
  EXPECT_TRUE(isOurs());
  entry_.reset();
  EXPECT_TRUE(CORBA::is_nil(names_->objectOf("Manager")));
}

TEST_F(CosNamingEntries, AreBoundAgainAfterTheServiceHasLostItsData) {
  bind();
  for (int round = 0; round < 3; ++round) {
    names_->lose();
    ASSERT_TRUE(names_->becomesBound("Manager"));
    EXPECT_TRUE(isOurs());
  }
}

TEST_F(CosNamingEntries, OfAnotherProcessAreKept) {
  bind();
  CosNaming::Name name;
  name.length(1);
  name[0].id = CORBA::string_dup("Manager");
  names_->rebind(name, other_);
  EXPECT_TRUE(names_->isResolved(3));
  entry_.reset();
  EXPECT_TRUE(other_->_is_equivalent(names_->objectOf("Manager")));
}

TEST_F(CosNamingEntries, AreCheckedAgainAfterAFailedCheck) {
  bind();
  names_->fail(true);
  EXPECT_TRUE(names_->isResolved(3));
  names_->lose();
  EXPECT_TRUE(names_->isResolved(3));
  EXPECT_TRUE(CORBA::is_nil(names_->objectOf("Manager")));
  names_->fail(false);
  ASSERT_TRUE(names_->becomesBound("Manager"));
  EXPECT_TRUE(isOurs());
}

TEST_F(CosNamingEntries, LogOneLineForAllFailedChecksInARow) {
  bind();
  testing::internal::CaptureStderr();
  names_->fail(true);
  EXPECT_TRUE(names_->isResolved(5));
  names_->fail(false);
  names_->lose();
  EXPECT_TRUE(names_->becomesBound("Manager"));
  EXPECT_TRUE(names_->isResolved(2));
  entry_.reset();
  const std::string lines = testing::internal::GetCapturedStderr();
  const std::string failure = "naming service " + reference() + ": NO_RESOURCES";
  const std::size_t first = lines.find(failure);
  ASSERT_NE(std::string::npos, first) << lines;
  EXPECT_EQ(std::string::npos, lines.find(failure, first + 1)) << lines;
  EXPECT_NE(std::string::npos, lines.find("naming service " + reference() +
                                          " had lost the entry \"Manager\", which is bound again"))
      << lines;
}

TEST_F(CosNamingEntries, AreRemovedWhenNoThreadCanBeStarted) {
  bind();  // the ORB starts its threads
  entry_.reset();
  {
    const support::NoThreads none;
    EXPECT_THROW(bind(), std::system_error);
  }
  EXPECT_TRUE(CORBA::is_nil(names_->objectOf("Manager")));
}

TEST_F(CosNamingEntries, AreRefusedForAReferenceThatIsNoNamingContext) {
  const std::string service = "corbaloc:iiop:1.2@" + orb::format(server_->endpoint()) + "/Nobody";
  EXPECT_THROW(CosNamingEntry(server_->get(), service, "Manager", object_, [] { return false; }),
               NamingError);
}

}  // namespace
