// The functions that the test program defines and the journal module calls.

#ifndef TESTS_UNIT_HOST_DEFAULTS_JOURNALMODULE_H
#define TESTS_UNIT_HOST_DEFAULTS_JOURNALMODULE_H

#include "platform/framework/Export.h"

// Defined by the test program. The module calls them in init, in fini and when a service object is
// deleted.
extern "C" PLATFORM_API void moduleInit();
extern "C" PLATFORM_API void moduleFini();
extern "C" PLATFORM_API void moduleDeleted();

#endif
