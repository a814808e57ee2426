// Calls of the contracts that say which exception is raised.

#ifndef CONFORMANCE_PROBE_CALLS_H
#define CONFORMANCE_PROBE_CALLS_H

#include <string>

#include "conformance/shared/Verdict.h"
#include "orb/idl/globaldefs.h"
#include "platform/bundlemgr/BundleMgr.h"
#include "platform/domain/DomainInterface.h"
#include "platform/framework/ProcessException.h"

namespace conformance::probe {

// Thread-safety of all functions: any thread.

// "ProcessException, code 5: DETAIL", or the like. REQUIRES: called in a catch block.
inline std::string describeCurrentException() {
  try {
    throw;
  } catch (ProcessException& failure) {
    return "ProcessException, code " + std::to_string(failure.errorCode) + ": " +
           failure.detail.str();
  } catch (const globaldefs::ProcessingFailureException& failure) {
    return std::string("ProcessingFailureException: ") + failure.errorReason.in();
  } catch (const CORBA::Exception& failure) {
    return std::string("the CORBA exception ") + failure._name();
  } catch (const std::exception& failure) {
    return std::string("the exception ") + failure.what();
  } catch (...) {
    return "an exception of an unknown type";
  }
}

// Returns the result of a call that must not raise anything. Throws Broken, with the name of the
// call, for every exception.
template <typename Call>
auto strictly(const std::string& name, Call call) -> decltype(call()) {
  try {
    return call();
  } catch (...) {
    throw Broken(name + " raises " + describeCurrentException());
  }
}

// Returns the result of a call that may raise CORBA exceptions only. Throws Skipped for these, and
// Broken for other exceptions.
template <typename Call>
auto quietly(const std::string& name, Call call) -> decltype(call()) {
  try {
    return call();
  } catch (const CORBA::Exception&) {
    throw Skipped(name + " raises " + describeCurrentException() + ", as it may");
  } catch (...) {
    throw Broken(name + " raises " + describeCurrentException());
  }
}

// The same for a call that may raise ProcessException too.
template <typename Call>
auto platformCall(const std::string& name, Call call) -> decltype(call()) {
  try {
    return call();
  } catch (ProcessException&) {
    throw Skipped(name + " raises " + describeCurrentException() + ", as it may");
  } catch (const CORBA::Exception&) {
    throw Skipped(name + " raises " + describeCurrentException() + ", as it may");
  } catch (...) {
    throw Broken(name + " raises " + describeCurrentException());
  }
}

// Throws Broken when the call raises no exception.
template <typename Call>
void requireRefusal(const std::string& name, Call call) {
  try {
    call();
  } catch (...) {
    return;
  }
  throw Broken(name + " raises no exception");
}

// The interface that is published under a name, as the module looks it up; null when there is none.
template <typename Interface>
Interface* published(const char* name) {
  NS_BUNDLEMGR1::InterfaceBuffer* const buffer =
      strictly("CheckIFBuf", [name] { return NS_BUNDLEMGR1::CheckIFBuf(name); });
  if (buffer != nullptr && buffer->First() != nullptr) {
    return dynamic_cast<Interface*>(buffer->First());
  }
  for (NS_BUNDLEMGR1::ServiceObjectBase* object :
       NS_BUNDLEMGR1::BundleMgr::Instance()->GetServiceObjects()) {
    if (auto* const found = dynamic_cast<Interface*>(object->GetInterface())) {
      return found;
    }
  }
  return nullptr;
}

// The same for an interface that the host must have. Throws Broken when there is none.
template <typename Interface>
Interface& required(const char* name) {
  Interface* const found = published<Interface>(name);
  require(found != nullptr, std::string("no ") + name + " is published");
  return *found;
}

// Owns the holder of a query's result, and releases the holder in the destructor. Thread-safety:
// one thread. Errors: std::bad_alloc.
template <typename Holder>
class QueryResult {
 public:
  QueryResult() : holder_(new Holder) {}
  ~QueryResult() { holder_->Release(); }
  QueryResult(const QueryResult&) = delete;
  QueryResult& operator=(const QueryResult&) = delete;

  Holder* get() { return holder_; }
  auto& value() { return holder_->Value(); }

 private:
  Holder* const holder_;
};

// The accessors of the domain, and its topology nodes. Throw Broken.
NS_DOMAIN::TopoData& topoData();
NS_DOMAIN::NEData& neData();
std::vector<NS_DOMAIN::TopoNode_T> topoNodes();

// The id of a topology subnetwork. Throws Skipped when the network has none.
std::string subnetworkId();

}  // namespace conformance::probe

#endif
