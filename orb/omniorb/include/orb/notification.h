// Stubs and skeletons of the CORBA notification service's structured events and their consumers.

#ifndef ORB_NOTIFICATION_H
#define ORB_NOTIFICATION_H

#include <CosNotification.hh>
#include <CosNotifyComm.hh>

#endif
