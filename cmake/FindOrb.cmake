# The ORB that TOPO_ORB names, as users of the headers need it. Defines:
#   Orb::Orb           headers, libraries and flags
#   Orb::Naming        stubs and skeletons of the CORBA naming service; component Naming
#   Orb::Notification  stubs and skeletons of the CORBA notification and event services; component Notification
#   Orb_VERSION        its version
#   Orb_ABI_VERSION    the part of the version that a binary depends on
#   Orb_HINT           one sentence for a user whose machine has no such ORB
include(FindPackageHandleStandardArgs)
include("${CMAKE_CURRENT_LIST_DIR}/orb/${TOPO_ORB}.cmake")
