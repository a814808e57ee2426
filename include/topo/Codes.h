// Failure codes of the module's own. Unsigned 32-bit as everywhere; 0 is success.

#ifndef TOPO_CODES_H
#define TOPO_CODES_H

#include "orb/corba.h"

namespace topo {

// A conversion between domain and TMF records failed, or an iterator could not be made.
constexpr CORBA::ULong ERR_TOPO_CONVERSION = 0x411800BA;  // 1092092090

}  // namespace topo

#endif
