# omniORB, from Debian's packages. See FindOrb.cmake.

find_path(OMNIORB_INCLUDE_DIR omniORB4/CORBA.h)
find_library(OMNIORB_LIBRARY omniORB4)
find_library(OMNIORB_DYNAMIC_LIBRARY omniDynamic4)
find_library(OMNIORB_THREAD_LIBRARY omnithread)
find_path(OMNIORB_SERVICES_INCLUDE_DIR CosNotifyComm.hh PATH_SUFFIXES COS)
find_library(OMNIORB_SERVICES_LIBRARY COS4)
find_library(OMNIORB_SERVICES_DYNAMIC_LIBRARY COSDynamic4)
if(OMNIORB_SERVICES_INCLUDE_DIR AND OMNIORB_SERVICES_LIBRARY AND OMNIORB_SERVICES_DYNAMIC_LIBRARY)
  set(Orb_Notification_FOUND TRUE)
endif()

set(Orb_VERSION)
if(EXISTS "${OMNIORB_INCLUDE_DIR}/omniORB4/acconfig.h")
  file(STRINGS "${OMNIORB_INCLUDE_DIR}/omniORB4/acconfig.h" _orb_version REGEX "define PACKAGE_VERSION ")
  string(REGEX MATCH "[0-9.]+" Orb_VERSION "${_orb_version}")
endif()
# The libraries of 4.2.x have the same names and are interchangeable.
string(REGEX MATCH "^[0-9]+\\.[0-9]+" Orb_ABI_VERSION "${Orb_VERSION}")
set(Orb_HINT "Debian's package libomniorb4-dev has it.")

set(Orb_Naming_FOUND TRUE)  # a part of omniORB's library

find_package_handle_standard_args(Orb
  REQUIRED_VARS OMNIORB_LIBRARY OMNIORB_DYNAMIC_LIBRARY OMNIORB_THREAD_LIBRARY OMNIORB_INCLUDE_DIR
  VERSION_VAR Orb_VERSION
  HANDLE_COMPONENTS)

if(Orb_FOUND AND NOT TARGET Orb::Orb)
  add_library(Orb::Orb INTERFACE IMPORTED)
  target_include_directories(Orb::Orb SYSTEM INTERFACE "${OMNIORB_INCLUDE_DIR}")
  target_link_libraries(Orb::Orb INTERFACE
    "${OMNIORB_LIBRARY}" "${OMNIORB_DYNAMIC_LIBRARY}" "${OMNIORB_THREAD_LIBRARY}" Threads::Threads)
endif()

if(Orb_FOUND AND NOT TARGET Orb::Naming)
  add_library(Orb::Naming INTERFACE IMPORTED)
  target_link_libraries(Orb::Naming INTERFACE Orb::Orb)
endif()

if(Orb_FOUND AND Orb_Notification_FOUND AND NOT TARGET Orb::Notification)
  add_library(Orb::Notification INTERFACE IMPORTED)
  target_include_directories(Orb::Notification SYSTEM INTERFACE "${OMNIORB_SERVICES_INCLUDE_DIR}")
  target_link_libraries(Orb::Notification INTERFACE
    Orb::Orb "${OMNIORB_SERVICES_LIBRARY}" "${OMNIORB_SERVICES_DYNAMIC_LIBRARY}")
endif()
