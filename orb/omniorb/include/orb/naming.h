// Client stubs of the CORBA naming service.

#ifndef ORB_NAMING_H
#define ORB_NAMING_H

#include <omniORB4/Naming.hh>

#endif
