// A check of all requests of a server.

#ifndef ORB_REQUESTCHECK_H
#define ORB_REQUESTCHECK_H

#include <functional>

#include "orb/orb.h"

namespace orb {

// Called with the target of every request from another process, before the arguments are decoded
// and before the observer and the guard of the object, on the thread of the request and on several
// threads at the same time. May throw a CORBA system exception: the request is rejected with that
// exception. Must not block. Not called for a LocateRequest, which asks only whether the server has
// an object.
using RequestCheck = std::function<void(const ObjectKey&, const Request&)>;

// Installs a check of all objects of the server in place of the present one; null removes the
// check. Returns when no call of the former check is running. The end of the server removes the
// check, too. Thread-safety: one thread at a time. REQUIRES: a server of startServer().
void checkRequests(Server& server, RequestCheck check);

}  // namespace orb

#endif
