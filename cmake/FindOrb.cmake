# The ORB that TOPO_ORB names. Defines:
#   Orb::Orb            headers and libraries
#   Orb::Internal       the ORB's internal headers, for orb/ alone
#   ORB_IDL_COMPILER    its IDL compiler

include(FindPackageHandleStandardArgs)

find_path(OMNIORB_INCLUDE_DIR omniORB4/CORBA.h)
find_library(OMNIORB_LIBRARY omniORB4)
find_library(OMNIORB_DYNAMIC_LIBRARY omniDynamic4)
find_library(OMNIORB_THREAD_LIBRARY omnithread)
find_program(ORB_IDL_COMPILER omniidl)

find_package_handle_standard_args(Orb REQUIRED_VARS
  OMNIORB_LIBRARY OMNIORB_DYNAMIC_LIBRARY OMNIORB_THREAD_LIBRARY OMNIORB_INCLUDE_DIR ORB_IDL_COMPILER)

if(Orb_FOUND AND NOT TARGET Orb::Orb)
  add_library(Orb::Orb INTERFACE IMPORTED)
  target_include_directories(Orb::Orb SYSTEM INTERFACE "${OMNIORB_INCLUDE_DIR}")
  target_link_libraries(Orb::Orb INTERFACE
    "${OMNIORB_LIBRARY}" "${OMNIORB_DYNAMIC_LIBRARY}" "${OMNIORB_THREAD_LIBRARY}" Threads::Threads)

  add_library(Orb::Internal INTERFACE IMPORTED)
  target_include_directories(Orb::Internal SYSTEM INTERFACE
    "${OMNIORB_INCLUDE_DIR}/omniORB4/internal")
endif()
