# What the build needs of TAO. See FindOrbTools.cmake.

find_program(ORB_IDL_COMPILER tao_idl ${_orb_search} PATH_SUFFIXES bin)
find_program(TAO_GPERF ace_gperf ${_orb_search} PATH_SUFFIXES bin)
find_path(ORB_SERVICES_IDL CosNotifyComm.idl HINTS "${TAO_SERVICES_INCLUDE_DIR}/orbsvcs"
  NO_DEFAULT_PATH)

find_package_handle_standard_args(OrbTools REQUIRED_VARS ORB_IDL_COMPILER ORB_SERVICES_IDL)

if(OrbTools_FOUND AND NOT TARGET Orb::Internal)
  add_library(Orb::Internal INTERFACE IMPORTED)  # nothing beyond the public headers
endif()

# TLS of outgoing calls, if TAO was built with TLS. This build finds OpenSSL itself.
set(_orb_tls_libraries TAO_SSLIOP TAO_Security TAO_PI_Server TAO_Valuetype TAO_Svc_Utils ACE_SSL)
find_path(TAO_TLS_INCLUDE_DIR orbsvcs/SSLIOPC.h ${_orb_search} PATH_SUFFIXES orbsvcs include)
set(_orb_tls "${TAO_TLS_INCLUDE_DIR}")
foreach(library IN LISTS _orb_tls_libraries)
  find_library(${library}_LIBRARY ${library} ${_orb_search} PATH_SUFFIXES lib lib64)
  if(NOT ${library}_LIBRARY)
    set(_orb_tls FALSE)
  endif()
endforeach()
if(_orb_tls AND OrbTools_FOUND AND NOT TARGET Orb::Tls)
  add_library(Orb::Tls INTERFACE IMPORTED)
  target_include_directories(Orb::Tls SYSTEM INTERFACE "${TAO_TLS_INCLUDE_DIR}")
  foreach(library IN LISTS _orb_tls_libraries)
    target_link_libraries(Orb::Tls INTERFACE "${${library}_LIBRARY}")
  endforeach()
endif()
if(TARGET Orb::Tls)
  message(STATUS "TLS: yes (TAO_SSLIOP)")
else()
  message(STATUS "TLS: no (TAO was built without TAO_SSLIOP)")
endif()

function(orb_generated name out variable)
  set(${variable} "${out}/${name}C.cpp" "${out}/${name}S.cpp" PARENT_SCOPE)
endfunction()

# The IDL compiler's libraries may be outside of the system's path. Without gperf the compiler generates slower tables.
function(orb_idl_command idl out variable)
  get_filename_component(libraries "${TAO_LIBRARY}" DIRECTORY)
  set(gperf)
  if(TAO_GPERF)
    set(gperf -g "${TAO_GPERF}")
  endif()
  set(${variable} "${CMAKE_COMMAND}" -E env "LD_LIBRARY_PATH=${libraries}:$ENV{LD_LIBRARY_PATH}"
    "${ORB_IDL_COMPILER}" ${gperf} "-I${PROJECT_SOURCE_DIR}/idl" "-I${ORB_SERVICES_IDL}"
    "-I${TAO_SERVICES_INCLUDE_DIR}" "-I${TAO_INCLUDE_DIR}" -o "${out}" "${idl}" PARENT_SCOPE)
endfunction()
