// Stubs and skeletons of TopoAgent.idl.

#ifndef ORB_IDL_TOPOAGENT_H
#define ORB_IDL_TOPOAGENT_H

#include "TopoAgentS.h"

#endif
