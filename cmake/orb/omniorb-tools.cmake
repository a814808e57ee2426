# What the build needs of omniORB. See FindOrbTools.cmake.

find_program(ORB_IDL_COMPILER omniidl)
find_path(ORB_SERVICES_IDL CosNotifyComm.idl PATH_SUFFIXES share/idl/omniORB/COS)

find_library(OMNIORB_TLS_LIBRARY omnisslTP4)

find_package_handle_standard_args(OrbTools
  REQUIRED_VARS ORB_IDL_COMPILER ORB_SERVICES_IDL OMNIORB_TLS_LIBRARY)

if(OrbTools_FOUND AND NOT TARGET Orb::Internal)
  add_library(Orb::Internal INTERFACE IMPORTED)
  target_include_directories(Orb::Internal SYSTEM INTERFACE
    "${OMNIORB_INCLUDE_DIR}/omniORB4/internal")
endif()

if(OrbTools_FOUND AND NOT TARGET Orb::Tls)
  add_library(Orb::Tls INTERFACE IMPORTED)  # TLS of outgoing calls
  target_link_libraries(Orb::Tls INTERFACE "${OMNIORB_TLS_LIBRARY}")
endif()

function(orb_generated name out variable)
  set(${variable} "${out}/${name}SK.cc" "${out}/${name}DynSK.cc" PARENT_SCOPE)
endfunction()

function(orb_idl_command idl out variable)
  set(${variable} "${ORB_IDL_COMPILER}" -bcxx -Wba -Wbuse_quotes "-I${PROJECT_SOURCE_DIR}/idl"
    "-I${ORB_SERVICES_IDL}" -C "${out}" "${idl}" PARENT_SCOPE)
endfunction()
