// Stubs and skeletons of notifications.idl.

#ifndef ORB_IDL_NOTIFICATIONS_H
#define ORB_IDL_NOTIFICATIONS_H

#include "notificationsS.h"

#endif
