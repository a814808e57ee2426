#include "conformance/Receiver.h"

#include "conformance/EventLayout.h"
#include "conformance/Records.h"
#include "idl/NotificationLayout.h"
#include "orb/idl/TopoManagementManager.h"

namespace conformance {
namespace {

namespace layout = notification_layout;

void readAttributes(const CosNotification::StructuredEvent& event, Notification& result) {
  const CORBA::Any* const value = fieldOf(event, layout::kAttributeList);
  const notifications::NVList_T* attributes = nullptr;
  const char* text = nullptr;
  if (value != nullptr && (*value >>= attributes) && attributes->length() == 1) {
    result.attribute = (*attributes)[0].name.in();
    result.name = ((*attributes)[0].value >>= text) ? text : "";
  }
}

Notification read(const CosNotification::StructuredEvent& event) {
  Notification result;
  result.id = idOf(event);
  result.layoutFault = layoutFaultOf(event);
  result.type = event.header.fixed_header.event_type.type_name.in();
  const CORBA::Any* const name = fieldOf(event, layout::kObjectName);
  const globaldefs::NVSList_T* pairs = nullptr;
  if (name != nullptr && (*name >>= pairs)) {
    result.object = toText(*pairs);
  }
  readAttributes(event, result);
  const TopoManagementManager::Node_T* node = nullptr;
  if (event.remainder_of_body >>= node) {
    result.hasNode = true;
    result.name = node->nativeEMSName.in();
  }
  return result;
}

class Consumer final : public virtual POA_CosNotifyComm::StructuredPushConsumer {
 public:
  explicit Consumer(Receiver& receiver) : receiver_(receiver) {}

  void push_structured_event(const CosNotification::StructuredEvent& event) override {
    receiver_.push(read(event));
  }
  void disconnect_structured_push_consumer() override {}
  void offer_change(const CosNotification::EventTypeSeq&,
                    const CosNotification::EventTypeSeq&) override {}

 private:
  Receiver& receiver_;
};

}  // namespace

Receiver::Receiver(orb::Server& server) : server_(server) {
  PortableServer::Servant_var<Consumer> consumer = new Consumer(*this);
  id_ = server_.rootPoa()->activate_object(consumer.in());
  reference_ = consumer->_this();
  servant_ = consumer._retn();
}

Receiver::~Receiver() {
  try {
    server_.rootPoa()->deactivate_object(id_.in());
  } catch (const CORBA::Exception&) {
    // The ORB is shutting down.
  }
}

void Receiver::push(const Notification& notification) {
  const std::lock_guard<std::mutex> lock(mutex_);
  received_.push_back(notification);
  arrived_.notify_all();
}

void Receiver::clear() {
  const std::lock_guard<std::mutex> lock(mutex_);
  received_.clear();
}

std::vector<Notification> Receiver::takeUntil(const std::string& object,
                                              std::chrono::milliseconds timeout) {
  const auto deadline = std::chrono::steady_clock::now() + timeout;
  std::vector<Notification> taken;
  std::unique_lock<std::mutex> lock(mutex_);
  while (arrived_.wait_until(lock, deadline, [this] { return !received_.empty(); })) {
    taken.push_back(received_.front());
    received_.pop_front();
    if (taken.back().object == object) {
      return taken;
    }
  }
  return {};
}

}  // namespace conformance
