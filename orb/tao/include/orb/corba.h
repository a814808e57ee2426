// The ORB's own headers: CORBA and PortableServer.

#ifndef ORB_CORBA_H
#define ORB_CORBA_H

#include <tao/AnyTypeCode/Any.h>
#include <tao/ORB.h>
#include <tao/Object.h>
#include <tao/PortableServer/PortableServer.h>
#include <tao/PortableServer/Servant_Base.h>
#include <tao/SystemException.h>
#include <tao/corba.h>

#endif
