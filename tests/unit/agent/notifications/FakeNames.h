// A fake naming service that resolves every name to a scripted list of references.

#ifndef UNIT_AGENT_NOTIFICATIONS_FAKENAMES_H
#define UNIT_AGENT_NOTIFICATIONS_FAKENAMES_H

#include <deque>
#include <mutex>
#include <string>
#include <utility>

#include "orb/naming.h"
#include "orb/orb.h"
#include "tests/support/ResolvingNames.h"
#include "tests/unit/agent/notifications/Events.h"

namespace notification_tests {

// Thread-safety: any thread.
class FakeNames final : public support::ResolvingNames {
 public:
  explicit FakeNames(CORBA::ORB_ptr orb) : orb_(CORBA::ORB::_duplicate(orb)) {}

  // The results of the next resolves; the last result is repeated. Empty: NotFound.
  void bindTo(std::deque<std::string> places) {
    const std::lock_guard<std::mutex> lock(mutex_);
    places_ = std::move(places);
  }

  // The reference and the name of each resolve.
  Record<std::string> resolved;
  Record<std::string> asked;

  CORBA::Object_ptr resolve_str(const char* name) override {
    asked.add(name);
    const std::string place = next();
    resolved.add(place);
    if (place.empty()) {
      throw CosNaming::NamingContext::NotFound(CosNaming::NamingContext::missing_node, {});
    }
    return orb_->string_to_object(place.c_str());
  }

 private:
  std::string next() {
    const std::lock_guard<std::mutex> lock(mutex_);
    std::string place = places_.at(0);
    if (places_.size() > 1) {
      places_.pop_front();
    }
    return place;
  }

  const CORBA::ORB_var orb_;
  std::mutex mutex_;
  std::deque<std::string> places_;  // guarded by mutex_
};

}  // namespace notification_tests

#endif
