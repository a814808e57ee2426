// Stubs and skeletons of the CORBA event service.

#ifndef ORB_EVENTCHANNEL_H
#define ORB_EVENTCHANNEL_H

#include <CosEventChannelAdmin.hh>
#include <CosEventComm.hh>

#endif
