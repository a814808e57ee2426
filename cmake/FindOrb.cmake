# The ORB that TOPO_ORB names. Defines:
#   Orb::Orb            headers and libraries
#   Orb::Internal       the ORB's internal headers, for orb/ only
#   Orb::Notification   stubs and skeletons of the CORBA notification and event services
#   ORB_IDL_COMPILER    its IDL compiler
#   ORB_SERVICES_IDL    the folder with the IDL of the CORBA services
# and the function
#   orb_generated(NAME OUT VARIABLE)       the files that the compiler generates from NAME.idl in the folder OUT
#   orb_idl_command(IDL OUT VARIABLE)      the command line of the compiler
include(FindPackageHandleStandardArgs)
include("${CMAKE_CURRENT_LIST_DIR}/orb/${TOPO_ORB}.cmake")
