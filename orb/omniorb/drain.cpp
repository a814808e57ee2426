#include "drain.h"

#include <omniORB4/callHandle.h>
#include <omniORB4/omniORB.h>
// The ORB's internal headers do not include each other, so their order is fixed.
// clang-format off
#include <omniORB4/internal/giopStrand.h>
#include <omniORB4/internal/giopStream.h>
#include <omniORB4/internal/giopStreamImpl.h>
#include <omniORB4/internal/GIOP_S.h>
#include <omniORB4/internal/orbParameters.h>
// clang-format on

#include <algorithm>
#include <atomic>
#include <string>
#include <utility>
#include <vector>

#include "log.h"
#include "strands.h"

namespace orb {
namespace {

constexpr std::chrono::milliseconds kInterval{50};

std::atomic<std::chrono::milliseconds> drainGrace{};

// A request without a received byte blocks no thread, and a request in the state WaitingForReply
// runs in a servant.
bool isInTransfer(const omni::GIOP_S& request) {
  return request.state() == omni::IOP_S::RequestIsBeingProcessed ||
         request.state() == omni::IOP_S::ReplyIsBeingComposed;
}

std::chrono::milliseconds milliseconds(const omni_time_t& time) {
  return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::seconds(time.s) +
                                                               std::chrono::nanoseconds(time.ns));
}

// The ORB sets the deadline of a request at the first byte of the arguments, and again at the first
// byte of the reply.
std::chrono::milliseconds transferTime(const omni::GIOP_S& request) {
  omni_time_t now;
  omni_thread::get_time(now);
  return milliseconds(now) - milliseconds(request.getDeadline()) +
         milliseconds(omni::orbParameters::serverCallTimeOutPeriod);
}

template <typename Condition>
bool anyRequest(omni::giopStrand& strand, Condition condition) {
  for (omni::giopStreamList* link = strand.servers.next; link != &strand.servers;
       link = link->next) {
    if (condition(*static_cast<omni::GIOP_S*>(link))) {
      return true;
    }
  }
  return false;
}

// Returns a reference to an object that is not active.
CORBA::Object_ptr probe(PortableServer::POA_ptr poa) {
  constexpr const char* kType = "IDL:omg.org/CORBA/Object:1.0";
  try {
    return poa->create_reference(kType);
  } catch (const PortableServer::POA::WrongPolicy&) {
    const PortableServer::ObjectId_var id = PortableServer::string_to_ObjectId("probe");
    return poa->create_reference_with_id(id.in(), kType);
  }
}

// Returns the common prefix of the keys of all objects of a POA, which the object id follows.
ObjectKey keyPrefix(PortableServer::POA_ptr poa) {
  const CORBA::Object_var object = probe(poa);
  PortableServer::ObjectId_var id = poa->reference_to_id(object.in());
  const ObjectKey key = objectKeyOf(object.in());
  return key.substr(0, key.size() - id->length());
}

bool hasPrefix(const omni::GIOP_S& request, const ObjectKey& prefix) {
  const auto* const key = reinterpret_cast<const char*>(request.key());
  return request.keysize() >= static_cast<int>(prefix.size()) &&
         std::equal(prefix.begin(), prefix.end(), key);
}

}  // namespace

void setDrainGrace(std::chrono::milliseconds grace) {
  drainGrace = grace;
}

Drain::Drain(Matches matches, Others others)
    : matches_(std::move(matches)), others_(others), thread_([this] { run(); }) {}

Drain::~Drain() {
  {
    const MutexLock lock(mutex_);
    end_ = true;
  }
  ended_.notify_one();
  thread_.join();
}

void Drain::run() {
  MutexLock lock(mutex_);
  while (!ended_.wait_for(lock.native(), kInterval, [this]() REQUIRES(mutex_) { return end_; })) {
    lock.unlock();
    shutDownStalled();
    lock.lock();
  }
}

// The ORB changes its lists of connections and requests under its transport lock.
void Drain::shutDownStalled() {
  const std::chrono::milliseconds grace = drainGrace;
  const auto waited = std::chrono::duration_cast<std::chrono::milliseconds>(
      std::chrono::steady_clock::now() - begin_);
  const auto isStalled = [&](omni::GIOP_S& request) {
    const bool hasDeadline = request.getDeadline() > omni_time_t();
    return isInTransfer(request) && matches_(request) &&
           (hasDeadline ? transferTime(request) : waited) >= grace;
  };
  std::vector<std::string> peers;
  {
    const omni_tracedmutex_lock lock(*omni::omniTransportLock);
    forEachStrand([&](omni::giopStrand& strand) {
      if (anyRequest(strand, isStalled)) {
        strand.connection->Shutdown();
        if (shutDown_.insert(strand.connection).second) {
          peers.emplace_back(strand.connection->peeraddress());
        }
      } else if (others_ == Others::kClosed && waited >= grace) {
        strand.connection->Shutdown();
      }
    });
  }
  for (const std::string& peer : peers) {
    writeLog("connection from " + peer + " is shut down: its client does not read or send");
  }
}

void destroyPoa(PortableServer::POA_ptr poa) {
  const Drain drain([prefix = keyPrefix(poa)](const omni::GIOP_S& request) {
    return hasPrefix(request, prefix);
  });
  const PortableServer::POAManager_var manager = poa->the_POAManager();
  // During its destruction the POA answers OBJ_ADAPTER, so the running requests must end before.
  manager->discard_requests(true);
  poa->destroy(true, true);
}

}  // namespace orb
