# What only the build of this project needs of the ORB that TOPO_ORB names. find_package(Orb) comes first. Defines:
#   Orb::Internal       the ORB's internal headers, for orb/ only
#   ORB_IDL_COMPILER    its IDL compiler
#   ORB_SERVICES_IDL    the folder with the IDL of the CORBA services
# and the functions
#   orb_generated(NAME OUT VARIABLE)     the files that the compiler generates from NAME.idl in the folder OUT
#   orb_idl_command(IDL OUT VARIABLE)    the command line of the compiler
include(FindPackageHandleStandardArgs)
include("${CMAKE_CURRENT_LIST_DIR}/orb/${TOPO_ORB}-tools.cmake")
