# libsystemd, whose sd_notify(3) reports the state of a service. Defines the target Systemd::systemd.
find_path(SYSTEMD_INCLUDE_DIR systemd/sd-daemon.h)
find_library(SYSTEMD_LIBRARY systemd)

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(Systemd REQUIRED_VARS SYSTEMD_LIBRARY SYSTEMD_INCLUDE_DIR)

if(SYSTEMD_FOUND AND NOT TARGET Systemd::systemd)
  add_library(Systemd::systemd UNKNOWN IMPORTED)
  set_target_properties(Systemd::systemd PROPERTIES
    IMPORTED_LOCATION "${SYSTEMD_LIBRARY}"
    INTERFACE_INCLUDE_DIRECTORIES "${SYSTEMD_INCLUDE_DIR}")
endif()
