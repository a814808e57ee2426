// Stubs and skeletons of the CORBA event service.

#ifndef ORB_EVENTCHANNEL_H
#define ORB_EVENTCHANNEL_H

#include <orbsvcs/CosEventChannelAdminS.h>
#include <orbsvcs/CosEventCommS.h>

#endif
