// Limits the time of calls to a consumer, for a host on TAO. Needs the library TAO_Messaging.
#include <tao/Messaging/Messaging.h>
#include <tao/ORB.h>

// A call through the new reference takes at most 3 seconds, then raises TIMEOUT.
CORBA::Object_ptr withLimitedCalls(CORBA::ORB_ptr orb, CORBA::Object_ptr consumer) {
  CORBA::Any limit;
  limit <<= TimeBase::TimeT(30000000);  // units of 100 nanoseconds
  CORBA::PolicyList policies(1);
  policies.length(1);
  policies[0] = orb->create_policy(Messaging::RELATIVE_RT_TIMEOUT_POLICY_TYPE, limit);
  return consumer->_set_policy_overrides(policies, CORBA::ADD_OVERRIDE);
}
