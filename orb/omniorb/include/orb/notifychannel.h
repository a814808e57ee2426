// Client stubs of the CORBA notification service's channels.

#ifndef ORB_NOTIFYCHANNEL_H
#define ORB_NOTIFYCHANNEL_H

#include <CosNotifyChannelAdmin.hh>

#endif
