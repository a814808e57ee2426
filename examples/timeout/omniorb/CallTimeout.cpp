// Limits the time of calls to a consumer, for a host on omniORB.
#include <omniORB4/CORBA.h>

// Afterwards a call through this reference takes at most 3 seconds, then raises TIMEOUT.
void limitCalls(CORBA::Object_ptr consumer) {
  omniORB::setClientCallTimeout(consumer, 3000);  // milliseconds
}
