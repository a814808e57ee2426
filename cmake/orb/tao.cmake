# TAO 2.x or 3.x with the ACE of the same release. See FindOrb.cmake and docs/building-on-tao.md.
#
# TAO_ROOT is the folder TAO of a built source tree (ACE_wrappers/TAO), or the prefix of an
# installed TAO and ACE.

# The search is limited to TAO_ROOT, so another ACE or TAO on the machine is never found.
set(_orb_search HINTS ${TOPO_TAO_ROOTS} NO_DEFAULT_PATH)

find_path(TAO_INCLUDE_DIR tao/corba.h ${_orb_search} PATH_SUFFIXES include)
find_path(TAO_SERVICES_INCLUDE_DIR orbsvcs/CosNotifyComm.idl ${_orb_search}
  PATH_SUFFIXES orbsvcs include)
find_program(ORB_IDL_COMPILER tao_idl ${_orb_search} PATH_SUFFIXES bin)
find_program(TAO_GPERF ace_gperf ${_orb_search} PATH_SUFFIXES bin)
find_path(ORB_SERVICES_IDL CosNotifyComm.idl HINTS "${TAO_SERVICES_INCLUDE_DIR}/orbsvcs"
  NO_DEFAULT_PATH)

# Each library precedes the libraries that it depends on.
set(_orb_libraries
  TAO_CosNaming_Skel TAO_CosNaming TAO_PortableServer TAO_PI TAO_CodecFactory TAO_Codeset
  TAO_AnyTypeCode TAO)
set(_orb_services TAO_CosNotification_Skel TAO_CosNotification TAO_CosEvent_Skel TAO_CosEvent)
set(_orb_found)
foreach(library IN LISTS _orb_libraries _orb_services)
  find_library(${library}_LIBRARY ${library} ${_orb_search} PATH_SUFFIXES lib lib64)
  list(APPEND _orb_found ${library}_LIBRARY)
endforeach()

find_package_handle_standard_args(Orb REQUIRED_VARS
  TAO_INCLUDE_DIR TAO_SERVICES_INCLUDE_DIR ORB_IDL_COMPILER ORB_SERVICES_IDL ${_orb_found})

if(Orb_FOUND AND NOT TARGET Orb::Orb)
  get_filename_component(_orb_library_dir "${TAO_LIBRARY}" DIRECTORY)

  add_library(Orb::Orb INTERFACE IMPORTED)
  target_include_directories(Orb::Orb SYSTEM INTERFACE
    "${TAO_INCLUDE_DIR}" "${TAO_SERVICES_INCLUDE_DIR}")
  foreach(library IN LISTS _orb_libraries)
    target_link_libraries(Orb::Orb INTERFACE "${${library}_LIBRARY}")
  endforeach()
  target_link_libraries(Orb::Orb INTERFACE ACE::ACE Threads::Threads)
  # Inline operators of old versions compare references with null.
  target_compile_options(Orb::Orb INTERFACE -fno-delete-null-pointer-checks)
  # TAO's libraries depend on libraries in the same folder. The dynamic linker searches a DT_RPATH for indirect
  # dependencies too, but a DT_RUNPATH (the linker's default) for direct dependencies only.
  target_link_options(Orb::Orb INTERFACE
    "LINKER:-rpath-link,${_orb_library_dir}" LINKER:--disable-new-dtags)

  add_library(Orb::Notification INTERFACE IMPORTED)
  target_include_directories(Orb::Notification SYSTEM INTERFACE "${ORB_SERVICES_IDL}")
  foreach(library IN LISTS _orb_services)
    target_link_libraries(Orb::Notification INTERFACE "${${library}_LIBRARY}")
  endforeach()
  target_link_libraries(Orb::Notification INTERFACE Orb::Orb)

  add_library(Orb::Internal INTERFACE IMPORTED)  # nothing beyond the public headers
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
