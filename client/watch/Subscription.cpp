#include "client/watch/Subscription.h"

#include <chrono>
#include <utility>

#include "client/agent/Connection.h"
#include "client/agent/Fetch.h"
#include "client/watch/Consumer.h"

namespace topoctl {
namespace {

using TopoManagementManager::NodeIterator_I;
using TopoManagementManager::NodeList_T;

constexpr std::chrono::milliseconds kUnsubscribeTimeout{2000};

// An agent that rejects the last id never had the earlier subscription, so the subscription begins
// without a last id.
TopoAgent::Subscription_I_ptr subscribeAfter(TopoAgent::Session_I_ptr session,
                                             CosNotifyComm::StructuredPushConsumer_ptr consumer,
                                             const std::string& lastId) {
  try {
    return session->subscribe(consumer, lastId.c_str());
  } catch (const globaldefs::ProcessingFailureException& refusal) {
    if (lastId.empty() || refusal.exceptionType != globaldefs::EXCPT_INVALID_INPUT) {
      throw;
    }
    return session->subscribe(consumer, "");
  }
}

// An agent of an earlier version has no getEventAccess: assumes that its module has the access.
TopoAgent::EventAccess_T eventAccessOf(TopoAgent::Session_I_ptr session) {
  try {
    return session->getEventAccess();
  } catch (const CORBA::BAD_OPERATION&) {
    return TopoAgent::EA_ALLOWED;
  }
}

}  // namespace

Subscription::Subscription(CORBA::ORB_ptr orb, PortableServer::POA_ptr poa,
                           const AgentAccess& access, Inbox& inbox, RetryPolicy retry)
    : orb_(orb), poa_(poa), access_(access), inbox_(inbox), retry_(std::move(retry)) {}

Subscription::~Subscription() {
  stopReceiving();
}

void Subscription::subscribe() {
  stopReceiving();
  subscription_ = TopoAgent::Subscription_I::_nil();
  subscription_ = callObject<TopoAgent::Session_I>(
      orb_, access_, kSession, [this](TopoAgent::Session_I_ptr session) {
        consumer_ = new Consumer(inbox_, inbox_.startSubscription());
        const PortableServer::ObjectId_var id = poa_->activate_object(consumer_.in());
        const CosNotifyComm::StructuredPushConsumer_var reference = consumer_->_this();
        eventAccess_ = eventAccessOf(session);
        return subscribeAfter(session, reference, inbox_.lastId());
      });
  if (CORBA::is_nil(subscription_)) {
    throw Failure(ExitCode::kCallFailed, "the agent gave no subscription");
  }
}

bool Subscription::isAlive() {
  try {
    try {
      subscription_->ping();
    } catch (const CORBA::SystemException& failure) {
      if (!orb::isConnectionClosed(failure)) {
        throw;
      }
      subscription_->ping();  // over a new connection
    }
    return true;
  } catch (const CORBA::OBJECT_NOT_EXIST&) {
    return false;
  }
}

KnownNodes Subscription::readNodes() {
  const auto batches =
      callManager(orb_, access_, retry_, [this](TopoManagementManager::TopoMgr_I_ptr manager) {
        return fetchAll<NodeList_T, NodeIterator_I>(
            access_.howMany,
            [manager](CORBA::ULong howMany, const TopoManagementManager::NodeList_T_out& list,
                      const TopoManagementManager::NodeIterator_I_out& iterator) {
              manager->getTopoSubnetworkViewInfo(howMany, list, iterator);
            },
            [](std::size_t) {});
      });
  KnownNodes nodes;
  batches.forEach([&nodes](const auto& node) { nodes.put(node); });
  return nodes;
}

void Subscription::stopReceiving() {
  inbox_.startSubscription();
  if (consumer_.in() == nullptr) {
    return;
  }
  try {
    const PortableServer::ObjectId_var id = poa_->servant_to_id(consumer_.in());
    poa_->deactivate_object(id.in());
  } catch (const CORBA::Exception&) {
    // The consumer is not active: the activation failed, or the ORB is shutting down.
  }
  consumer_ = nullptr;
}

void Subscription::unsubscribe() {
  stopReceiving();
  if (CORBA::is_nil(subscription_)) {
    return;
  }
  try {
    orb::setCallTimeout(subscription_, kUnsubscribeTimeout);
    subscription_->unsubscribe();
  } catch (const CORBA::Exception&) {
    // The agent drops a consumer that does not answer.
  }
  subscription_ = TopoAgent::Subscription_I::_nil();
}

}  // namespace topoctl
