// A base for fake naming services.

#ifndef TESTS_SUPPORT_RESOLVINGNAMES_H
#define TESTS_SUPPORT_RESOLVINGNAMES_H

#include "orb/naming.h"
#include "orb/orb.h"

namespace support {

// Throws NO_IMPLEMENT from every operation but resolve_str, which the subclass implements.
// Thread-safety: any thread. Owns nothing.
class ResolvingNames : public virtual POA_CosNaming::NamingContextExt {
 public:
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

}  // namespace support

#endif
