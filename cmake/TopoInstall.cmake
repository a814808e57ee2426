# The installed tree, described in docs/sdk.md. It can be moved. Its components:
#   module   the module, and the libraries that the module, agents and topo-conformance use
#   sdk      headers, IDL, topo-conformance and the CMake package TopoManager, for the developers of an agent; needs module
#   agent    topo-agentd; needs module
#   topoctl  the client, with its own copies of two libraries, so that it can be installed alone
#   doc      the documents
# cmake/TopoPackages.cmake makes Debian packages of these components.
include(CMakePackageConfigHelpers)

set(package "${CMAKE_INSTALL_LIBDIR}/cmake/TopoManager")
set(data "${CMAKE_INSTALL_DATADIR}/topo-manager")
set(topoctl_libraries "${TOPO_INSTALL_PRIVATEDIR}/topoctl")

# Programs and libraries find the libraries of this project from their own folders.
file(RELATIVE_PATH bin_to_lib "${CMAKE_INSTALL_FULL_BINDIR}" "${CMAKE_INSTALL_FULL_LIBDIR}")
set_target_properties(topo-agentd topo-conformance PROPERTIES INSTALL_RPATH "$ORIGIN/${bin_to_lib}/topo-manager")
set_target_properties(topoctl PROPERTIES INSTALL_RPATH "$ORIGIN/${bin_to_lib}/topo-manager/topoctl")
set_target_properties(zu_corba_topo topo_agent topo_agent_idl topo_host_defaults topo_conformance_probe PROPERTIES
  INSTALL_RPATH "$ORIGIN")

# All symbols are bound at the start, after which the tables of functions are read-only. The module is excluded: a host
# that does not define a function which the module never calls there could not load it.
if(NOT TOPO_SANITIZE)
  foreach(target IN ITEMS topo-agentd topoctl topo-conformance topo_agent topo_idl topo_agent_idl)
    target_link_options(${target} PRIVATE LINKER:-z,relro,-z,now)
  endforeach()
endif()

# module
set_target_properties(topo_idl PROPERTIES EXPORT_NAME idl)
set_target_properties(topo_platform PROPERTIES EXPORT_NAME platform)
set_target_properties(zu_corba_topo PROPERTIES EXPORT_NAME module)
set_target_properties(topo_host_defaults PROPERTIES EXPORT_NAME host_defaults)
install(TARGETS zu_corba_topo topo_idl topo_host_defaults EXPORT TopoManagerTargets
  LIBRARY DESTINATION "${TOPO_INSTALL_PRIVATEDIR}" COMPONENT module)
install(TARGETS topo_agent_idl LIBRARY DESTINATION "${TOPO_INSTALL_PRIVATEDIR}" COMPONENT module)

# sdk: files are included as they are in this repository; the ORB's generated headers through their wrappers.
set(orb_headers "orb/${TOPO_ORB}/include/orb")
install(TARGETS topo_platform EXPORT TopoManagerTargets)
install(DIRECTORY include/platform DESTINATION "${TOPO_INSTALL_INCLUDEDIR}" COMPONENT sdk
  FILES_MATCHING PATTERN "*.h" PATTERN README.md)
install(FILES "${orb_headers}/corba.h" "${orb_headers}/hostorb.h" "${orb_headers}/notification.h"
  DESTINATION "${TOPO_INSTALL_INCLUDEDIR}/orb" COMPONENT sdk)
install(FILES host_defaults/Module.h host_defaults/ModuleFile.h host_defaults/PlatformFailure.h
  host_defaults/RunningOrb.h
  DESTINATION "${TOPO_INSTALL_INCLUDEDIR}/host_defaults" COMPONENT sdk)
install(DIRECTORY "${orb_headers}/idl" DESTINATION "${TOPO_INSTALL_INCLUDEDIR}/orb" COMPONENT sdk
  FILES_MATCHING PATTERN "*.h" PATTERN TopoAgent.h EXCLUDE)
install(DIRECTORY "${PROJECT_BINARY_DIR}/idl/generated" DESTINATION "${TOPO_INSTALL_INCLUDEDIR}" COMPONENT sdk
  FILES_MATCHING PATTERN "*.h" PATTERN "*.hh" PATTERN "*.inl")
install(FILES idl/NotificationLayout.h idl/ObjectKeys.h DESTINATION "${TOPO_INSTALL_INCLUDEDIR}/idl" COMPONENT sdk)
install(DIRECTORY idl DESTINATION "${data}" COMPONENT sdk FILES_MATCHING PATTERN "*.idl")
install(DIRECTORY examples DESTINATION "${data}" COMPONENT sdk PATTERN build EXCLUDE)
# To be read by the developers of a host that does not use topo_host_defaults.
install(DIRECTORY host_defaults DESTINATION "${data}" COMPONENT sdk
  FILES_MATCHING PATTERN "*.cpp" PATTERN InterfaceBuffers.h)

# sdk: the conformance test, which calls the console and the session of an agent that has them.
install(TARGETS topo-conformance topo_conformance_probe
  RUNTIME COMPONENT sdk
  LIBRARY DESTINATION "${TOPO_INSTALL_PRIVATEDIR}" COMPONENT sdk)

# sdk: the package. An ORB is found as by the build.
set(idl_folder "${data}/idl")
configure_package_config_file(cmake/TopoManagerConfig.cmake.in TopoManagerConfig.cmake
  NO_CHECK_REQUIRED_COMPONENTS_MACRO
  INSTALL_DESTINATION "${package}" PATH_VARS TOPO_INSTALL_PRIVATEDIR idl_folder)
write_basic_package_version_file(TopoManagerConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES
  "${PROJECT_BINARY_DIR}/TopoManagerConfig.cmake" "${PROJECT_BINARY_DIR}/TopoManagerConfigVersion.cmake"
  cmake/FindACE.cmake cmake/FindOrb.cmake
  DESTINATION "${package}" COMPONENT sdk)
set(orb_files "cmake/orb/${TOPO_ORB}.cmake")
if(TOPO_ORB STREQUAL "tao")
  list(APPEND orb_files cmake/orb/tao-roots.cmake)
endif()
install(FILES ${orb_files} DESTINATION "${package}/orb" COMPONENT sdk)
install(EXPORT TopoManagerTargets NAMESPACE Topo:: DESTINATION "${package}" COMPONENT sdk)

# agent
install(TARGETS topo-agentd topo_agent
  RUNTIME COMPONENT agent
  LIBRARY DESTINATION "${TOPO_INSTALL_PRIVATEDIR}" COMPONENT agent)
install(DIRECTORY networks DESTINATION "${data}" COMPONENT agent)

# topoctl
install(TARGETS topoctl RUNTIME COMPONENT topoctl)
install(TARGETS topo_idl topo_agent_idl LIBRARY DESTINATION "${topoctl_libraries}" COMPONENT topoctl)

# doc
install(FILES README.md DESTINATION "${CMAKE_INSTALL_DATADIR}/doc/topo-manager" COMPONENT doc)
install(DIRECTORY docs DESTINATION "${CMAKE_INSTALL_DATADIR}/doc/topo-manager" COMPONENT doc)
