// Stubs and skeletons of common.idl.

#ifndef ORB_IDL_COMMON_H
#define ORB_IDL_COMMON_H

#include "commonS.h"

#endif
