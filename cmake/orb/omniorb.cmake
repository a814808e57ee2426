# omniORB, from Debian's packages. See FindOrb.cmake.

find_path(OMNIORB_INCLUDE_DIR omniORB4/CORBA.h)
find_library(OMNIORB_LIBRARY omniORB4)
find_library(OMNIORB_DYNAMIC_LIBRARY omniDynamic4)
find_library(OMNIORB_THREAD_LIBRARY omnithread)
find_program(ORB_IDL_COMPILER omniidl)
find_path(OMNIORB_SERVICES_INCLUDE_DIR CosNotifyComm.hh PATH_SUFFIXES COS)
find_library(OMNIORB_SERVICES_LIBRARY COS4)
find_library(OMNIORB_SERVICES_DYNAMIC_LIBRARY COSDynamic4)
find_path(ORB_SERVICES_IDL CosNotifyComm.idl PATH_SUFFIXES share/idl/omniORB/COS)

find_package_handle_standard_args(Orb REQUIRED_VARS
  OMNIORB_LIBRARY OMNIORB_DYNAMIC_LIBRARY OMNIORB_THREAD_LIBRARY OMNIORB_INCLUDE_DIR ORB_IDL_COMPILER
  OMNIORB_SERVICES_INCLUDE_DIR OMNIORB_SERVICES_LIBRARY OMNIORB_SERVICES_DYNAMIC_LIBRARY
  ORB_SERVICES_IDL)

if(Orb_FOUND AND NOT TARGET Orb::Orb)
  add_library(Orb::Orb INTERFACE IMPORTED)
  target_include_directories(Orb::Orb SYSTEM INTERFACE "${OMNIORB_INCLUDE_DIR}")
  target_link_libraries(Orb::Orb INTERFACE
    "${OMNIORB_LIBRARY}" "${OMNIORB_DYNAMIC_LIBRARY}" "${OMNIORB_THREAD_LIBRARY}" Threads::Threads)

  add_library(Orb::Notification INTERFACE IMPORTED)
  target_include_directories(Orb::Notification SYSTEM INTERFACE "${OMNIORB_SERVICES_INCLUDE_DIR}")
  target_link_libraries(Orb::Notification INTERFACE
    Orb::Orb "${OMNIORB_SERVICES_LIBRARY}" "${OMNIORB_SERVICES_DYNAMIC_LIBRARY}")

  add_library(Orb::Internal INTERFACE IMPORTED)
  target_include_directories(Orb::Internal SYSTEM INTERFACE
    "${OMNIORB_INCLUDE_DIR}/omniORB4/internal")
endif()

function(orb_generated name out variable)
  set(${variable} "${out}/${name}SK.cc" "${out}/${name}DynSK.cc" PARENT_SCOPE)
endfunction()

function(orb_idl_command idl out variable)
  set(${variable} "${ORB_IDL_COMPILER}" -bcxx -Wba -Wbuse_quotes "-I${PROJECT_SOURCE_DIR}/idl"
    "-I${ORB_SERVICES_IDL}" -C "${out}" "${idl}" PARENT_SCOPE)
endfunction()
