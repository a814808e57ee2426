// A naming service that knows the names a test gives it.

#ifndef TESTS_UNIT_CLIENT_FAKENAMING_H
#define TESTS_UNIT_CLIENT_FAKENAMING_H

#include <map>
#include <string>

#include "orb/naming.h"
#include "orb/orb.h"

namespace topoctl {

class FakeNaming final : public virtual POA_CosNaming::NamingContextExt {
 public:
  std::map<std::string, CORBA::Object_var> bound;  // constant while requests are served

  CORBA::Object_ptr resolve_str(const char* name) override {
    if (std::string(name).find("..") != std::string::npos) {
      throw CosNaming::NamingContext::InvalidName();
    }
    const auto found = bound.find(name);
    if (found == bound.end()) {
      throw CosNaming::NamingContext::NotFound(CosNaming::NamingContext::missing_node, {});
    }
    return CORBA::Object::_duplicate(found->second);
  }

  // Nothing below is called by a client that only resolves.
  void bind(const CosNaming::Name&, CORBA::Object_ptr) override { unused(); }
  void rebind(const CosNaming::Name&, CORBA::Object_ptr) override { unused(); }
  void bind_context(const CosNaming::Name&, CosNaming::NamingContext_ptr) override { unused(); }
  void rebind_context(const CosNaming::Name&, CosNaming::NamingContext_ptr) override { unused(); }
  CORBA::Object_ptr resolve(const CosNaming::Name&) override { unused(); }
  void unbind(const CosNaming::Name&) override { unused(); }
  CosNaming::NamingContext_ptr new_context() override { unused(); }
  CosNaming::NamingContext_ptr bind_new_context(const CosNaming::Name&) override { unused(); }
  void destroy() override { unused(); }
  void list(CORBA::ULong, CosNaming::BindingList_out, CosNaming::BindingIterator_out) override {
    unused();
  }
  char* to_string(const CosNaming::Name&) override { unused(); }
  CosNaming::Name* to_name(const char*) override { unused(); }
  char* to_url(const char*, const char*) override { unused(); }

 private:
  [[noreturn]] static void unused() { throw CORBA::NO_IMPLEMENT(); }
};

}  // namespace topoctl

#endif
