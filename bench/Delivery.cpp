#include "bench/Delivery.h"

#include <chrono>
#include <stdexcept>

#include "tests/support/Pairs.h"

namespace bench {
namespace {

constexpr std::chrono::seconds kPatience{60};

}  // namespace

globaldefs::NVSList_T changedObject() {
  return nameOf({{"EMS", "Bench"}, {"ManagedElement", "5"}});
}

notifications::NVList_T newName() {
  notifications::NVList_T attributes;
  attributes.length(1);
  attributes[0].name = CORBA::string_dup("nativeEMSName");
  attributes[0].value <<= "Frankfurt am Main";
  return attributes;
}

CosNotifyComm::StructuredPushConsumer_var consumerAt(CORBA::ORB_ptr orb,
                                                     const std::string& reference) {
  const CORBA::Object_var object = orb->string_to_object(reference.c_str());
  return CosNotifyComm::StructuredPushConsumer::_narrow(object.in());
}

Delivery::Delivery(orb::Server& server, int subscribers)
    : consumers_(TOPO_BENCH_CONSUMERS, {std::to_string(subscribers)}),
      notifier_(server, {}, {0, [this] { return ++lastChange_; }},
                [] { return std::chrono::system_clock::now(); }) {
  for (int i = 0; i < subscribers; ++i) {
    subscribe(server.get(), consumers_.readLine());
  }
}

bool Delivery::deliver(int count) {
  for (int i = 0; i < count; ++i) {
    notifier_.attributesChanged(name_, attributes_, false, nullptr);
  }
  return notifier_.flush(kPatience);
}

bool Delivery::reached(int subscribers) {
  const agent::NotifierStatus status = notifier_.status();
  bool all = status.receivers.length() == static_cast<CORBA::ULong>(subscribers);
  for (CORBA::ULong i = 0; i < status.receivers.length(); ++i) {
    all = all && status.receivers[i].sent == status.notifications;
  }
  return all;
}

void Delivery::subscribe(CORBA::ORB_ptr orb, const std::string& reference) {
  const auto consumer = consumerAt(orb, reference);
  const auto subscription = notifier_.subscribe(consumer.in(), "", "bench");
  if (!subscription.ok()) {
    throw std::runtime_error(subscription.outcome().reason);
  }
}

}  // namespace bench
