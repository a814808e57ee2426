# ACE, the adaptive communication environment. Defines the target ACE::ACE.
#
# With TAO_ROOT set, the target is the ACE of that TAO; every other ACE on the machine is ignored.

if(TOPO_ORB STREQUAL "tao")
  set(_ace_search HINTS ${TOPO_TAO_ROOTS} NO_DEFAULT_PATH)
else()
  set(_ace_search)
endif()

find_path(ACE_INCLUDE_DIR ace/ACE.h ${_ace_search} PATH_SUFFIXES include)
find_library(ACE_LIBRARY ACE ${_ace_search} PATH_SUFFIXES lib lib64)

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(ACE REQUIRED_VARS ACE_LIBRARY ACE_INCLUDE_DIR)

if(ACE_FOUND AND NOT TARGET ACE::ACE)
  add_library(ACE::ACE UNKNOWN IMPORTED)
  set_target_properties(ACE::ACE PROPERTIES
    IMPORTED_LOCATION "${ACE_LIBRARY}"
    INTERFACE_INCLUDE_DIRECTORIES "${ACE_INCLUDE_DIR}")
endif()
