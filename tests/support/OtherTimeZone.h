// Another time zone, for tests of times.

#ifndef TESTS_SUPPORT_OTHERTIMEZONE_H
#define TESTS_SUPPORT_OTHERTIMEZONE_H

#include <cstdlib>
#include <ctime>

namespace support {

// During the life of the object, local time is five hours behind UTC. Thread-safety: the process
// must have one thread. Owns the variable TZ of the environment. Never fails.
class OtherTimeZone {
 public:
  OtherTimeZone() {
    setenv("TZ", "EST5", 1);
    tzset();
  }
  ~OtherTimeZone() {
    unsetenv("TZ");
    tzset();
  }
  OtherTimeZone(const OtherTimeZone&) = delete;
  OtherTimeZone& operator=(const OtherTimeZone&) = delete;
};

}  // namespace support

#endif
