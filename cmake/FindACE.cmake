# ACE, the adaptive communication environment. Defines the target ACE::ACE and the variable ACE_VERSION.
#
# With TAO, the target is the ACE of that TAO; every other ACE on the machine is ignored.

if(TOPO_ORB STREQUAL "tao")
  include("${CMAKE_CURRENT_LIST_DIR}/orb/tao-roots.cmake")
  set(_ace_search HINTS ${TOPO_TAO_ROOTS} NO_DEFAULT_PATH)
else()
  set(_ace_search)
endif()

find_path(ACE_INCLUDE_DIR ace/ACE.h ${_ace_search} PATH_SUFFIXES include)
find_library(ACE_LIBRARY ACE ${_ace_search} PATH_SUFFIXES lib lib64)

set(ACE_VERSION)
if(EXISTS "${ACE_INCLUDE_DIR}/ace/Version.h")
  file(STRINGS "${ACE_INCLUDE_DIR}/ace/Version.h" _ace_version REGEX "define ACE_VERSION ")
  string(REGEX MATCH "[0-9.]+" ACE_VERSION "${_ace_version}")
endif()

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(ACE
  REQUIRED_VARS ACE_LIBRARY ACE_INCLUDE_DIR
  VERSION_VAR ACE_VERSION)

if(ACE_FOUND AND NOT TARGET ACE::ACE)
  add_library(ACE::ACE UNKNOWN IMPORTED)
  set_target_properties(ACE::ACE PROPERTIES IMPORTED_LOCATION "${ACE_LIBRARY}")
  target_include_directories(ACE::ACE SYSTEM INTERFACE "${ACE_INCLUDE_DIR}")
endif()
