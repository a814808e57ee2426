// Object references in text form.

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "orb/orb.h"
#include "orb/resolve.h"
#include "tests/fuzz/Require.h"

namespace {

using orb::MalformedReference;

void checkParts(CORBA::ORB_ptr orb, const std::string& reference) {
  constexpr std::chrono::milliseconds kTimeout{1000};
  const CORBA::Object_var object = orb::isCorbaname(reference)
                                       ? orb::namingServiceOf(orb, reference, kTimeout)
                                       : orb::resolve(orb, reference, kTimeout);
  orb::addressOf(object.in());
  try {
    const CORBA::Object_var beside = orb::objectBeside(orb, object.in(), "Key");
    orb::addressOf(beside.in());
    const CORBA::String_var text = orb->object_to_string(beside.in());
    orb::checkReference(orb, text.in());
  } catch (const CORBA::BAD_PARAM&) {
    // A reference without an address has no object beside it.
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static const std::unique_ptr<orb::Orb> orb = orb::startClient({});
  const std::string reference(reinterpret_cast<const char*>(data), size);
  try {
    orb::checkReference(orb->get(), reference);
  } catch (const MalformedReference&) {
    return 0;
  }
  checkParts(orb->get(), reference);
  return 0;
}
