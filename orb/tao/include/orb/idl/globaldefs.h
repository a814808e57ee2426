// Stubs and skeletons of globaldefs.idl.

#ifndef ORB_IDL_GLOBALDEFS_H
#define ORB_IDL_GLOBALDEFS_H

#include "globaldefsS.h"

#endif
