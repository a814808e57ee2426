// A node for a check.

#ifndef CONFORMANCE_CHECKS_TEMPORARYNODE_H
#define CONFORMANCE_CHECKS_TEMPORARYNODE_H

#include <exception>
#include <string>

#include "conformance/Check.h"
#include "conformance/checks/Views.h"
#include "conformance/shared/Names.h"

namespace conformance {

// A topology subnetwork that exists until the end of the check.
//
// Thread-safety: none. Borrows the context. Errors: the constructor and remove throw the exceptions
// of Operator and of the calls; the destructor ignores them.
class TemporaryNode {
 public:
  TemporaryNode(Context& context, const std::string& id)
      : context_(context),
        id_(id),
        name_(objectName(emsOf(context.manager()), "TopoSubnetwork", id)) {
    context_.host.op().create(id_);
  }

  ~TemporaryNode() {
    try {
      remove();
    } catch (const std::exception&) {
      // The host has ended, or refuses; the check has failed already.
    }
  }

  TemporaryNode(const TemporaryNode&) = delete;
  TemporaryNode& operator=(const TemporaryNode&) = delete;

  void remove() {
    if (exists_) {
      exists_ = false;
      context_.host.op().remove(id_);
    }
  }

  const std::string& id() const { return id_; }
  const globaldefs::NVSList_T& name() const { return name_; }

 private:
  Context& context_;
  const std::string id_;
  const globaldefs::NVSList_T name_;
  bool exists_ = true;
};

}  // namespace conformance

#endif
