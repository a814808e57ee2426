// A naming service whose bindings a test sets.

#ifndef TESTS_SUPPORT_FAKENAMING_H
#define TESTS_SUPPORT_FAKENAMING_H

#include <map>
#include <string>

#include "orb/naming.h"
#include "orb/orb.h"
#include "tests/support/ResolvingNames.h"

namespace support {

// Resolves the names in `bound`. Thread-safety: any thread of the ORB. Owns a reference to each
// object. Errors: NotFound for other names, InvalidName for a name that contains "..",
// CannotProceed for a name in the context "elsewhere".
class FakeNaming final : public ResolvingNames {
 public:
  std::map<std::string, CORBA::Object_var> bound;  // constant while requests are served

  CORBA::Object_ptr resolve_str(const char* name) override {
    if (std::string(name).find("..") != std::string::npos) {
      throw CosNaming::NamingContext::InvalidName();
    }
    if (std::string(name).rfind("elsewhere/", 0) == 0) {
      throw CosNaming::NamingContext::CannotProceed();
    }
    const auto found = bound.find(name);
    if (found == bound.end()) {
      throw CosNaming::NamingContext::NotFound(CosNaming::NamingContext::missing_node, {});
    }
    return CORBA::Object::_duplicate(found->second);
  }
};

}  // namespace support

#endif
