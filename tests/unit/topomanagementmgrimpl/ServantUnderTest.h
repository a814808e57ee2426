// The servant with a public destructor for tests.

#ifndef TESTS_UNIT_TOPOMANAGEMENTMGRIMPL_SERVANTUNDERTEST_H
#define TESTS_UNIT_TOPOMANAGEMENTMGRIMPL_SERVANTUNDERTEST_H

#include "topomanagementmgrimpl/TATopoManagementMgr_IImpl.h"

class ServantUnderTest final : public NS_CORBA::TATopoManagementMgr_IImpl {};

using Servant_var = PortableServer::Servant_var<ServantUnderTest>;

#endif
