# TAO 2.x or 3.x with the ACE of the same release. See FindOrb.cmake and docs/building-on-tao.md.

# The search is limited to TAO_ROOT, so another ACE or TAO on the machine is never found.
include("${CMAKE_CURRENT_LIST_DIR}/tao-roots.cmake")
set(_orb_search HINTS ${TOPO_TAO_ROOTS} NO_DEFAULT_PATH)

find_path(TAO_INCLUDE_DIR tao/corba.h ${_orb_search} PATH_SUFFIXES include)
find_path(TAO_SERVICES_INCLUDE_DIR orbsvcs/CosNotifyComm.idl ${_orb_search}
  PATH_SUFFIXES orbsvcs include)

# Each library precedes the libraries that it depends on.
set(_orb_libraries
  TAO_Strategies TAO_PortableServer TAO_PI TAO_CodecFactory TAO_Codeset TAO_AnyTypeCode TAO)
set(_orb_Naming TAO_CosNaming_Skel TAO_CosNaming)
set(_orb_Notification TAO_CosNotification_Skel TAO_CosNotification TAO_CosEvent_Skel TAO_CosEvent)
set(_orb_found)
foreach(library IN LISTS _orb_libraries)
  find_library(${library}_LIBRARY ${library} ${_orb_search} PATH_SUFFIXES lib lib64)
  list(APPEND _orb_found ${library}_LIBRARY)
endforeach()
foreach(_orb_service IN ITEMS Naming Notification)
  set(Orb_${_orb_service}_FOUND TRUE)
  foreach(library IN LISTS _orb_${_orb_service})
    find_library(${library}_LIBRARY ${library} ${_orb_search} PATH_SUFFIXES lib lib64)
    if(NOT ${library}_LIBRARY)
      set(Orb_${_orb_service}_FOUND FALSE)
    endif()
  endforeach()
endforeach()

set(Orb_VERSION)
if(EXISTS "${TAO_INCLUDE_DIR}/tao/Version.h")
  file(STRINGS "${TAO_INCLUDE_DIR}/tao/Version.h" _orb_version REGEX "define TAO_VERSION ")
  string(REGEX MATCH "[0-9.]+" Orb_VERSION "${_orb_version}")
endif()
set(Orb_ABI_VERSION "${Orb_VERSION}")
set(Orb_HINT "TAO_ROOT must be its folder or prefix.")

find_package_handle_standard_args(Orb
  REQUIRED_VARS TAO_INCLUDE_DIR TAO_SERVICES_INCLUDE_DIR ${_orb_found}
  VERSION_VAR Orb_VERSION
  HANDLE_COMPONENTS)

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
endif()

foreach(_orb_service IN ITEMS Naming Notification)
  if(Orb_FOUND AND Orb_${_orb_service}_FOUND AND NOT TARGET Orb::${_orb_service})
    add_library(Orb::${_orb_service} INTERFACE IMPORTED)
    # The generated headers of the services include each other without the folder orbsvcs.
    target_include_directories(Orb::${_orb_service} SYSTEM INTERFACE "${TAO_SERVICES_INCLUDE_DIR}/orbsvcs")
    foreach(library IN LISTS _orb_${_orb_service})
      target_link_libraries(Orb::${_orb_service} INTERFACE "${${library}_LIBRARY}")
    endforeach()
    target_link_libraries(Orb::${_orb_service} INTERFACE Orb::Orb)
  endif()
endforeach()
