// For tests of times: a process elsewhere on Earth.

#ifndef TESTS_SUPPORT_OTHERTIMEZONE_H
#define TESTS_SUPPORT_OTHERTIMEZONE_H

#include <cstdlib>
#include <ctime>

namespace support {

// Local time is five hours behind UTC for as long as this lives. Thread-safety: no other thread.
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
