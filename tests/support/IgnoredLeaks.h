// Leaks that are not reported.

#ifndef TESTS_SUPPORT_IGNOREDLEAKS_H
#define TESTS_SUPPORT_IGNOREDLEAKS_H

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/lsan_interface.h>
#endif

namespace support {

// During the life of the object, the leak sanitizer ignores what the thread allocates. For the load
// of a module whose init throws: the Service Configurator leaks about 100 bytes of its parser when
// an exception passes through it. Thread-safety: one thread. Owns nothing.
#if defined(__SANITIZE_ADDRESS__)
using IgnoredLeaks = __lsan::ScopedDisabler;
#else
struct IgnoredLeaks {
  IgnoredLeaks() {}
};
#endif

}  // namespace support

#endif
