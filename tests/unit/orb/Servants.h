// Servants for tests of the ORB.

#ifndef TESTS_UNIT_ORB_SERVANTS_H
#define TESTS_UNIT_ORB_SERVANTS_H

#include <functional>
#include <future>
#include <string>
#include <utility>

#include "orb/idl/TopoManagementManager.h"
#include "orb/orb.h"

namespace orb_tests {

inline orb::Options quickOptions() {
  orb::Options options;
  options.callTimeout = std::chrono::seconds(30);
  return options;
}

// getLength() calls a function.
class Answering final : public POA_TopoManagementManager::NodeIterator_I {
 public:
  using Function = std::function<CORBA::ULong()>;

  explicit Answering(Function function) : function_(std::move(function)) {}
  explicit Answering(CORBA::ULong answer) : function_([answer] { return answer; }) {}

  CORBA::Boolean next_n(CORBA::ULong, TopoManagementManager::NodeList_T_out list) override {
    list = new TopoManagementManager::NodeList_T;
    return false;
  }
  CORBA::ULong getLength() override { return function_(); }
  void destroy() override {}

 private:
  const Function function_;
};

// Replies of next_n() exceed the socket buffers.
class LargeReplies final : public POA_TopoManagementManager::NodeIterator_I {
 public:
  std::future<void> asked() { return asked_.get_future(); }

  CORBA::Boolean next_n(CORBA::ULong, TopoManagementManager::NodeList_T_out list) override {
    const std::string text(std::size_t{1024} * 1024, 'x');
    TopoManagementManager::NodeList_T_var nodes = new TopoManagementManager::NodeList_T;
    nodes->length(16);
    for (CORBA::ULong i = 0; i < nodes->length(); ++i) {
      nodes[i].nativeEMSName = text.c_str();
    }
    list = nodes._retn();
    asked_.set_value();
    return true;
  }
  CORBA::ULong getLength() override { return 0; }
  void destroy() override {}

 private:
  std::promise<void> asked_;
};

inline CORBA::ULong lengthOf(CORBA::Object_ptr object) {
  const auto iterator = TopoManagementManager::NodeIterator_I::_unchecked_narrow(object);
  const TopoManagementManager::NodeIterator_I_var owner = iterator;
  return owner->getLength();
}

}  // namespace orb_tests

#endif
