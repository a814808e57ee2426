// Stubs and skeletons of TopoManagementManager.idl.

#ifndef ORB_IDL_TOPOMANAGEMENTMANAGER_H
#define ORB_IDL_TOPOMANAGEMENTMANAGER_H

#include "TopoManagementManagerS.h"

#endif
