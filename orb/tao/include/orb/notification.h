// Stubs and skeletons of the CORBA notification service's structured events and their consumers.

#ifndef ORB_NOTIFICATION_H
#define ORB_NOTIFICATION_H

#include <orbsvcs/CosNotificationS.h>
#include <orbsvcs/CosNotifyCommS.h>

#endif
