// The declaration of the module's entry point.

#ifndef TESTS_UNIT_TOPOSVC_ENTRY_H
#define TESTS_UNIT_TOPOSVC_ENTRY_H

#include "ace/Service_Object.h"

extern "C" ACE_Service_Object* _make_zu_corba_topo(ACE_Service_Object_Exterminator* gobbler);

#endif
