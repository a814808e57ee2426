# The ORB that TOPO_ORB names. Defines:
#   Orb::Orb            headers and libraries
#   Orb::Internal       the ORB's internal headers, for orb/ alone
#   Orb::Notification   stubs and skeletons of the CORBA notification and event services
#   ORB_IDL_COMPILER    its IDL compiler
#   ORB_SERVICES_IDL    the folder with the IDL of the CORBA services
# and the function
#   orb_generated(NAME OUT VARIABLE)       what the compiler makes of NAME.idl in the folder OUT
#   orb_idl_command(IDL OUT VARIABLE)      the command line that does it
include(FindPackageHandleStandardArgs)
include("${CMAKE_CURRENT_LIST_DIR}/orb/${TOPO_ORB}.cmake")
