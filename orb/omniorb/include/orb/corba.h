// The ORB's own headers: CORBA and PortableServer.

#ifndef ORB_CORBA_H
#define ORB_CORBA_H

#include <omniORB4/CORBA.h>

#endif
