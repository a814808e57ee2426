// Stubs and skeletons of the CORBA naming service.

#ifndef ORB_NAMING_H
#define ORB_NAMING_H

#include <orbsvcs/CosNamingS.h>

#endif
