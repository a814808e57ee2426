// Stubs and skeletons of topologicalLink.idl.

#ifndef ORB_IDL_TOPOLOGICALLINK_H
#define ORB_IDL_TOPOLOGICALLINK_H

#include "topologicalLinkS.h"

#endif
