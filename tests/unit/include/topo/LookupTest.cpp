#include "topo/Lookup.h"

#include <dlfcn.h>

#include <atomic>
#include <chrono>
#include <future>
#include <memory>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "tests/fakes/Fixture.h"
#include "tests/fakes/Security.h"
#include "tests/fakes/WaitedFor.h"

namespace {

using Lines = std::vector<std::string>;

using fakes::Bundle;
using NS_BUNDLEMGR1::_g_actualmutex;
using NS_BUNDLEMGR1::NULLServiceInterface;
using NS_CORBA::CorbaUtilInterface;
using NS_DOMAIN::DomainInterface;
using NS_SECURITY_SERVICE1::SecurityIF;

template <typename Interface>
NULLServiceInterface* placeholder() {
  return topo::placeholderSlot<Interface>.load();
}

template <typename Interface>
void emptySlot() {
  topo::placeholderSlot<Interface>.store(nullptr);
}

// The slots before any code of the module runs.
const bool slotsWereEmptyAtLoad = placeholder<DomainInterface>() == nullptr &&
                                  placeholder<CorbaUtilInterface>() == nullptr &&
                                  placeholder<SecurityIF>() == nullptr;

// Whether any thread, including the caller, has the shared mutex locked.
bool mutexIsTaken() {
  if (pthread_mutex_trylock(&_g_actualmutex) != 0) {
    return true;
  }
  pthread_mutex_unlock(&_g_actualmutex);
  return false;
}

template <typename Interface>
bool isMissing() {
  try {
    topo::lookup<Interface>();
    return false;
  } catch (const InterfaceNotExistException&) {
    return true;
  }
}

class TopoLookup : public fakes::Fixture {
 protected:
  TopoLookup() {
    emptySlot<DomainInterface>();
    emptySlot<CorbaUtilInterface>();
    emptySlot<SecurityIF>();
  }

  // Makes a service object, which the bundle manager lists; `offered` may be null.
  Bundle& load(const std::string& name, NS_BUNDLEMGR1::ServiceInterface* offered) {
    bundles_.push_back(std::make_unique<Bundle>(name, offered));
    return *bundles_.back();
  }

 private:
  std::vector<std::unique_ptr<Bundle>> bundles_;
};

using TopoLookupDeathTest = TopoLookup;

// The runtime names the exception in some builds only.
constexpr const char* kTerminated = "terminate called";

// --- Names.

TEST_F(TopoLookup, AsksForTheDomainInterfaceByItsName) {
  fakes::publishPlatform();
  EXPECT_EQ(topo::lookup<DomainInterface>(), &fakes::domainInterface());
  EXPECT_EQ(fakes::Journal::lines(), Lines{"CheckIFBuf(\"DomainInterface\")"});
}

TEST_F(TopoLookup, AsksForTheCorbaUtilityInterfaceByItsName) {
  fakes::publishPlatform();
  EXPECT_EQ(topo::lookup<CorbaUtilInterface>(), &fakes::corbaUtil());
  EXPECT_EQ(fakes::Journal::lines(), Lines{"CheckIFBuf(\"CorbaUtilInterface\")"});
}

TEST_F(TopoLookup, AsksForTheSecurityInterfaceByItsName) {
  fakes::publishPlatform();
  EXPECT_EQ(topo::lookup<SecurityIF>(), &fakes::security());
  EXPECT_EQ(fakes::Journal::lines(), Lines{"CheckIFBuf(\"SecurityIF\")"});
}

// --- Placeholders.

TEST_F(TopoLookup, HasNoPlaceholdersAtLoad) {
  EXPECT_TRUE(slotsWereEmptyAtLoad);
}

TEST_F(TopoLookup, FillsAPlaceholderWithTheFirstLookup) {
  fakes::publishPlatform();
  topo::lookup<CorbaUtilInterface>();
  ASSERT_NE(placeholder<CorbaUtilInterface>(), nullptr);
  EXPECT_STREQ(placeholder<CorbaUtilInterface>()->GetDescription(), "NULLServiceInterface!");
}

TEST_F(TopoLookup, FillsThePlaceholderOfTheWantedInterfaceOnly) {
  fakes::publishPlatform();
  topo::lookup<CorbaUtilInterface>();
  EXPECT_EQ(placeholder<DomainInterface>(), nullptr);
  EXPECT_EQ(placeholder<SecurityIF>(), nullptr);
}

TEST_F(TopoLookup, HasAPlaceholderForEachInterface) {
  fakes::publishPlatform();
  topo::lookup<DomainInterface>();
  topo::lookup<CorbaUtilInterface>();
  topo::lookup<SecurityIF>();
  const std::set<NULLServiceInterface*> placeholders = {
      placeholder<DomainInterface>(), placeholder<CorbaUtilInterface>(), placeholder<SecurityIF>()};
  EXPECT_EQ(placeholders.size(), 3U);
  EXPECT_EQ(placeholders.count(nullptr), 0U);
}

TEST_F(TopoLookup, FillsThePlaceholderWhenTheInterfaceIsMissing) {
  EXPECT_TRUE(isMissing<CorbaUtilInterface>());
  EXPECT_NE(placeholder<CorbaUtilInterface>(), nullptr);
}

TEST_F(TopoLookup, NeverReturnsThePlaceholder) {
  EXPECT_TRUE(isMissing<CorbaUtilInterface>());
  EXPECT_TRUE(isMissing<CorbaUtilInterface>());
}

TEST_F(TopoLookup, KeepsOnePlaceholderOverManyLookups) {
  fakes::publishPlatform();
  topo::lookup<DomainInterface>();
  NULLServiceInterface* const first = placeholder<DomainInterface>();
  for (int i = 0; i < 100; ++i) {
    topo::lookup<DomainInterface>();
    EXPECT_EQ(placeholder<DomainInterface>(), first);
  }
}

TEST_F(TopoLookup, KeepsThePlaceholderWhenAnInterfaceIsPublishedLater) {
  EXPECT_TRUE(isMissing<DomainInterface>());
  NULLServiceInterface* const first = placeholder<DomainInterface>();
  fakes::publishPlatform();
  topo::lookup<DomainInterface>();
  EXPECT_EQ(placeholder<DomainInterface>(), first);
  EXPECT_EQ(fakes::Journal::count("~NULLServiceInterface"), 0);
}

TEST_F(TopoLookup, MakesOnePlaceholderForAnyNumberOfThreads) {
  fakes::publishPlatform();
  constexpr int kThreads = 8;
  std::atomic<int> waiting{kThreads};
  std::vector<NULLServiceInterface*> seen(kThreads);
  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([&, i] {
      --waiting;
      while (waiting != 0) {
        std::this_thread::yield();
      }
      for (int round = 0; round < 200; ++round) {
        EXPECT_EQ(topo::lookup<CorbaUtilInterface>(), &fakes::corbaUtil());
      }
      seen[static_cast<std::size_t>(i)] = placeholder<CorbaUtilInterface>();
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  EXPECT_EQ(std::set<NULLServiceInterface*>(seen.begin(), seen.end()).size(), 1U);
  EXPECT_NE(seen.front(), nullptr);
}

// Whether a thread waits for the shared mutex.
bool mutexIsWaitedFor() {
  return fakes::isWaitedFor(_g_actualmutex);
}

TEST_F(TopoLookup, WaitsForTheMutexToFillAPlaceholder) {
  fakes::publishPlatform();
  std::atomic<bool> ended{false};
  ACE_OS::mutex_lock(&_g_actualmutex);
  auto found = std::async(std::launch::async, [&] {
    CorbaUtilInterface* const result = topo::lookup<CorbaUtilInterface>();
    ended = true;
    return result;
  });
  while (!ended && !mutexIsWaitedFor()) {
    std::this_thread::yield();
  }
  EXPECT_FALSE(ended);
  EXPECT_EQ(placeholder<CorbaUtilInterface>(), nullptr);
  EXPECT_EQ(fakes::Journal::lines(), Lines{});
  ACE_OS::mutex_unlock(&_g_actualmutex);
  EXPECT_EQ(found.get(), &fakes::corbaUtil());
  EXPECT_NE(placeholder<CorbaUtilInterface>(), nullptr);
}

TEST_F(TopoLookup, KeepsAPlaceholderThatAnotherThreadStored) {
  fakes::publishPlatform();
  NULLServiceInterface other;
  ACE_OS::mutex_lock(&_g_actualmutex);
  auto found = std::async(std::launch::async, [] { return topo::lookup<CorbaUtilInterface>(); });
  while (!mutexIsWaitedFor() &&
         found.wait_for(std::chrono::seconds(0)) != std::future_status::ready) {
    std::this_thread::yield();
  }
  topo::placeholderSlot<CorbaUtilInterface>.store(&other);
  ACE_OS::mutex_unlock(&_g_actualmutex);
  EXPECT_EQ(found.get(), &fakes::corbaUtil());
  EXPECT_EQ(placeholder<CorbaUtilInterface>(), &other);
  emptySlot<CorbaUtilInterface>();
}

TEST_F(TopoLookup, FillsThePlaceholderBeforeItAsksForTheBuffer) {
  fakes::publishPlatform();
  NULLServiceInterface* seen = nullptr;
  fakes::onCall("CheckIFBuf", 1, [&]() -> CORBA::ULong {
    seen = placeholder<CorbaUtilInterface>();
    return 0;
  });
  topo::lookup<CorbaUtilInterface>();
  EXPECT_NE(seen, nullptr);
  EXPECT_EQ(seen, placeholder<CorbaUtilInterface>());
}

TEST_F(TopoLookup, FillsThePlaceholderWhenTheMutexCannotBeLocked) {
  fakes::publishPlatform();
  fakes::makeSharedMutexFail();
  EXPECT_EQ(topo::lookup<CorbaUtilInterface>(), &fakes::corbaUtil());
  EXPECT_NE(placeholder<CorbaUtilInterface>(), nullptr);
}

TEST_F(TopoLookup, DoesNotUnlockAMutexThatItCouldNotLock) {
  fakes::publishPlatform();
  fakes::makeSharedMutexFail();
  topo::lookup<CorbaUtilInterface>();
  EXPECT_FALSE(isMissing<CorbaUtilInterface>());
  EXPECT_TRUE(fakes::sharedMutexIsHeld());
}

TEST_F(TopoLookup, UnlocksTheMutexAfterFillingThePlaceholder) {
  fakes::publishPlatform();
  topo::lookup<CorbaUtilInterface>();
  EXPECT_FALSE(mutexIsTaken());
}

// --- The published buffer.

TEST_F(TopoLookup, ReturnsTheFirstEntryOfTheBuffer) {
  const std::unique_ptr<CorbaUtilInterface> second(fakes::makeCorbaUtil());
  fakes::publish("CorbaUtilInterface", &fakes::corbaUtil());
  fakes::publish("CorbaUtilInterface", second.get());
  EXPECT_EQ(topo::lookup<CorbaUtilInterface>(), &fakes::corbaUtil());
}

// Whether this build aborts on a cast to a wrong type.
bool castsAreChecked() {
  return dlsym(RTLD_DEFAULT, "__ubsan_handle_dynamic_type_cache_miss_abort") != nullptr;
}

TEST_F(TopoLookup, TestsNoTypeInTheBuffer) {
  if (castsAreChecked()) {
    GTEST_SKIP() << "the cast of a foreign type is undefined";
  }
  load("service", fakes::makeCorbaUtil());
  NS_BUNDLEMGR1::ServiceInterface* const foreign = &fakes::security();
  fakes::publish("CorbaUtilInterface", foreign);
  EXPECT_EQ(static_cast<const void*>(topo::lookup<CorbaUtilInterface>()),
            static_cast<const void*>(foreign));
}

TEST_F(TopoLookup, PrefersTheBufferToAServiceObjectThatMatches) {
  load("service", fakes::makeCorbaUtil());
  fakes::publishPlatform();
  fakes::Journal::clear();
  EXPECT_EQ(topo::lookup<CorbaUtilInterface>(), &fakes::corbaUtil());
  EXPECT_EQ(fakes::Journal::lines(), Lines{"CheckIFBuf(\"CorbaUtilInterface\")"});
}

TEST_F(TopoLookup, TakesNoLockWhenTheBufferHasAnEntry) {
  fakes::publishPlatform();
  topo::lookup<CorbaUtilInterface>();  // makes the placeholder, with the mutex locked
  std::promise<void> release;
  std::promise<void> taken;
  std::thread holder([&] {
    ACE_OS::mutex_lock(&_g_actualmutex);
    taken.set_value();
    release.get_future().wait();
    ACE_OS::mutex_unlock(&_g_actualmutex);
  });
  taken.get_future().wait();
  auto found = std::async(std::launch::async, [] { return topo::lookup<CorbaUtilInterface>(); });
  EXPECT_EQ(found.wait_for(std::chrono::seconds(20)), std::future_status::ready);
  release.set_value();
  holder.join();
  EXPECT_EQ(found.get(), &fakes::corbaUtil());
}

TEST_F(TopoLookup, ReturnsTheEntryOfTheBufferWhenTheMutexCannotBeLocked) {
  fakes::publishPlatform();
  fakes::makeSharedMutexFail();
  EXPECT_EQ(topo::lookup<DomainInterface>(), &fakes::domainInterface());
}

TEST_F(TopoLookup, ReadsTheBufferForEveryLookup) {
  EXPECT_TRUE(isMissing<CorbaUtilInterface>());
  fakes::publish("CorbaUtilInterface", &fakes::corbaUtil());
  EXPECT_EQ(topo::lookup<CorbaUtilInterface>(), &fakes::corbaUtil());
  fakes::openBuffer("CorbaUtilInterface").Remove(&fakes::corbaUtil());
  EXPECT_TRUE(isMissing<CorbaUtilInterface>());
}

// --- The walk over the service objects.

TEST_F(TopoLookup, FindsTheInterfaceOfAServiceObject) {
  CorbaUtilInterface* const offered = fakes::makeCorbaUtil();
  load("service", offered);
  EXPECT_EQ(topo::lookup<CorbaUtilInterface>(), offered);
}

TEST_F(TopoLookup, SearchesTheServiceObjectsInTheirOrder) {
  CorbaUtilInterface* const first = fakes::makeCorbaUtil();
  load("nothing", nullptr);
  load("other", fakes::makeDomainInterface());
  load("first", first);
  load("second", fakes::makeCorbaUtil());
  fakes::Journal::clear();
  EXPECT_EQ(topo::lookup<CorbaUtilInterface>(), first);
  EXPECT_EQ(fakes::Journal::lines(), (Lines{"CheckIFBuf(\"CorbaUtilInterface\")",
                                            "GetServiceObjects()", "GetInterface(\"nothing\")",
                                            "GetInterface(\"other\")", "GetInterface(\"first\")"}));
}

TEST_F(TopoLookup, PrefersTheFirstServiceObjectOfTheList) {
  CorbaUtilInterface* const one = fakes::makeCorbaUtil();
  CorbaUtilInterface* const other = fakes::makeCorbaUtil();
  Bundle& bundle = load("one", one);
  load("other", other);
  EXPECT_EQ(topo::lookup<CorbaUtilInterface>(), one);
  bundle.UnRegistSvc();
  EXPECT_EQ(topo::lookup<CorbaUtilInterface>(), other);
  bundle.RegistSvc();  // moves to the end of the list
  EXPECT_EQ(topo::lookup<CorbaUtilInterface>(), other);
}

TEST_F(TopoLookup, LocksTheMutexDuringTheSearch) {
  load("nothing", nullptr);
  load("service", fakes::makeCorbaUtil());
  std::vector<bool> taken;
  fakes::onEveryCall("GetInterface", [&]() -> CORBA::ULong {
    taken.push_back(mutexIsTaken());
    return 0;
  });
  topo::lookup<CorbaUtilInterface>();
  EXPECT_EQ(taken, (std::vector<bool>{true, true}));
}

TEST_F(TopoLookup, CollectsTheCandidatesBeforeTheMutexIsLocked) {
  load("service", fakes::makeCorbaUtil());
  bool taken = true;
  fakes::onCall("GetServiceObjects", 1, [&]() -> CORBA::ULong {
    taken = mutexIsTaken();
    return 0;
  });
  topo::lookup<CorbaUtilInterface>();
  EXPECT_FALSE(taken);
}

TEST_F(TopoLookup, UnlocksTheMutexAfterTheSearch) {
  EXPECT_TRUE(isMissing<CorbaUtilInterface>());
  EXPECT_FALSE(mutexIsTaken());
  load("service", fakes::makeCorbaUtil());
  topo::lookup<CorbaUtilInterface>();
  EXPECT_FALSE(mutexIsTaken());
}

TEST_F(TopoLookup, SkipsTheSearchWhenTheMutexCannotBeLocked) {
  load("service", fakes::makeCorbaUtil());
  fakes::makeSharedMutexFail();
  fakes::Journal::clear();
  EXPECT_TRUE(isMissing<CorbaUtilInterface>());
  EXPECT_EQ(fakes::Journal::count("GetServiceObjects"), 1);
  EXPECT_EQ(fakes::Journal::count("GetInterface"), 0);
  EXPECT_TRUE(fakes::sharedMutexIsHeld());
}

TEST_F(TopoLookup, AppendsTheFoundInterfaceToAnEmptyBuffer) {
  CorbaUtilInterface* const offered = fakes::makeCorbaUtil();
  load("service", offered);
  NS_BUNDLEMGR1::InterfaceBuffer& buffer = fakes::openBuffer("CorbaUtilInterface");
  EXPECT_EQ(topo::lookup<CorbaUtilInterface>(), offered);
  EXPECT_EQ(buffer.First(), offered);
}

TEST_F(TopoLookup, FindsTheInterfaceInTheBufferTheNextTime) {
  CorbaUtilInterface* const offered = fakes::makeCorbaUtil();
  load("service", offered);
  fakes::openBuffer("CorbaUtilInterface");
  topo::lookup<CorbaUtilInterface>();
  fakes::Journal::clear();
  EXPECT_EQ(topo::lookup<CorbaUtilInterface>(), offered);
  EXPECT_EQ(fakes::Journal::lines(), Lines{"CheckIFBuf(\"CorbaUtilInterface\")"});
}

TEST_F(TopoLookup, SearchesEveryTimeWithoutABuffer) {
  load("service", fakes::makeCorbaUtil());
  topo::lookup<CorbaUtilInterface>();
  topo::lookup<CorbaUtilInterface>();
  EXPECT_EQ(fakes::Journal::count("GetServiceObjects"), 2);
  EXPECT_EQ(NS_BUNDLEMGR1::CheckIFBuf("CorbaUtilInterface"), nullptr);
}

TEST_F(TopoLookup, KeepsABufferThatWasFilledDuringTheLookup) {
  CorbaUtilInterface* const offered = fakes::makeCorbaUtil();
  load("service", offered);
  NS_BUNDLEMGR1::InterfaceBuffer& buffer = fakes::openBuffer("CorbaUtilInterface");
  fakes::onCall("GetServiceObjects", 1, []() -> CORBA::ULong {
    fakes::publish("CorbaUtilInterface", &fakes::corbaUtil());
    return 0;
  });
  EXPECT_EQ(topo::lookup<CorbaUtilInterface>(), offered);
  EXPECT_EQ(buffer.First(), &fakes::corbaUtil());
  buffer.Remove(&fakes::corbaUtil());
  EXPECT_EQ(buffer.First(), nullptr);
}

TEST_F(TopoLookup, LeavesAnEmptyBufferEmptyWhenNothingMatches) {
  load("other", fakes::makeDomainInterface());
  NS_BUNDLEMGR1::InterfaceBuffer& buffer = fakes::openBuffer("CorbaUtilInterface");
  EXPECT_TRUE(isMissing<CorbaUtilInterface>());
  EXPECT_EQ(buffer.First(), nullptr);
}

TEST_F(TopoLookup, GivesEveryThreadTheSameInterface) {
  CorbaUtilInterface* const offered = fakes::makeCorbaUtil();
  load("service", offered);
  fakes::openBuffer("CorbaUtilInterface");
  std::vector<std::thread> threads;
  for (int i = 0; i < 8; ++i) {
    threads.emplace_back([offered] {
      for (int round = 0; round < 200; ++round) {
        EXPECT_EQ(topo::lookup<CorbaUtilInterface>(), offered);
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
}

// --- Failures.

TEST_F(TopoLookup, ReportsAMissingInterfaceByItsCodeOnly) {
  try {
    topo::lookup<CorbaUtilInterface>();
    FAIL() << "nothing is published";
  } catch (InterfaceNotExistException& failure) {
    EXPECT_EQ(failure.errorCode, 0x41180004);
    EXPECT_EQ(failure.line, 0);
    EXPECT_EQ(
        failure.file.str() + failure.function.str() + failure.context.str() + failure.detail.str(),
        "");
  }
}

TEST_F(TopoLookup, ReportsEachMissingInterface) {
  EXPECT_TRUE(isMissing<DomainInterface>());
  EXPECT_TRUE(isMissing<CorbaUtilInterface>());
  EXPECT_TRUE(isMissing<SecurityIF>());
}

TEST_F(TopoLookup, NeverLogs) {
  EXPECT_TRUE(isMissing<CorbaUtilInterface>());
  load("service", fakes::makeCorbaUtil());
  topo::lookup<CorbaUtilInterface>();
  EXPECT_EQ(fakes::Journal::linesOf({"TaDebug", "TaDebugWithPara", "NbiException"}), Lines{});
}

TEST_F(TopoLookupDeathTest, EndsTheProcessWhenTheBufferLookupFails) {
  fakes::onCall("CheckIFBuf", 1, fakes::raiseRuntimeError("no buffers today"));
  EXPECT_DEATH(topo::lookup<CorbaUtilInterface>(), kTerminated);
}

TEST_F(TopoLookupDeathTest, EndsTheProcessWhenTheServiceObjectsCannotBeListed) {
  fakes::onCall("GetServiceObjects", 1, fakes::raiseRuntimeError("no list today"));
  EXPECT_DEATH(topo::lookup<CorbaUtilInterface>(), kTerminated);
}

TEST_F(TopoLookupDeathTest, EndsTheProcessWhenAServiceObjectThrows) {
  load("service", nullptr);
  fakes::onCall("GetInterface", 1, fakes::raiseRuntimeError("no interface today"));
  EXPECT_DEATH(topo::lookup<CorbaUtilInterface>(), kTerminated);
}

TEST_F(TopoLookupDeathTest, EndsTheProcessWhenMemoryIsShort) {
  fakes::onCall("GetServiceObjects", 1, fakes::raiseBadAlloc());
  EXPECT_DEATH(topo::lookup<CorbaUtilInterface>(), kTerminated);
}

TEST_F(TopoLookupDeathTest, EndsTheProcessEvenForTheFrameworksOwnException) {
  fakes::onCall("GetServiceObjects", 1, fakes::raiseProcessException(7));
  EXPECT_DEATH(topo::lookup<CorbaUtilInterface>(), kTerminated);
}

// --- The domain facet.

TEST_F(TopoLookup, GetsTheFacetOfTheCorbaNorthbound) {
  fakes::publishPlatform();
  EXPECT_EQ(topo::GetCorbaDomain(), &fakes::domainFacet());
  EXPECT_EQ(fakes::Journal::lines(),
            (Lines{"CheckIFBuf(\"DomainInterface\")", "GetFacet(\"CORBA\")"}));
}

TEST_F(TopoLookup, ThrowsWhenTheDomainIsMissing) {
  EXPECT_THROW(topo::GetCorbaDomain(), InterfaceNotExistException);
  EXPECT_EQ(fakes::Journal::count("GetFacet"), 0);
}

TEST_F(TopoLookup, PassesExceptionsOfTheFacetOperation) {
  fakes::publishPlatform();
  fakes::onCall("GetFacet", 1, fakes::raiseProcessException(5));
  EXPECT_THROW(topo::GetCorbaDomain(), ProcessException);
}

}  // namespace
