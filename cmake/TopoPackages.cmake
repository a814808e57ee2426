# The Debian packages, made by scripts/package.sh with CPack from an installed tree in /usr:
#   topo-agent   the components module, agent, doc and service
#   topoctl      the component topoctl, which needs no other package of this project
#   topo-dev     the component sdk; needs topo-agent of the same version, which has the module and its libraries
# The components service, agent_debian, topoctl_debian and sdk_debian are in the packages only.
#
# TOPO_PACKAGES: whether there are packages. Debian has no TAO, and no package has sanitizers.
set(TOPO_PACKAGES OFF)
if(TOPO_SANITIZE OR NOT TOPO_ORB STREQUAL "omniorb")
  return()
endif()
set(TOPO_PACKAGES ON)
set(TOPO_PACKAGE_ORB libomniorb4)  # the begin of the names of the ORB's packages

set(debian "${PROJECT_SOURCE_DIR}/packaging/debian")
set(packages topo-agent topoctl topo-dev)
set(components_topo-agent module agent doc service agent_debian)
set(components_topoctl topoctl topoctl_debian)
set(components_topo-dev sdk sdk_debian)

set(changelog "${CMAKE_CURRENT_BINARY_DIR}/packaging/changelog.gz")
file(MAKE_DIRECTORY "${CMAKE_CURRENT_BINARY_DIR}/packaging")
compressed("${debian}/changelog" "${changelog}")
add_custom_target(package_files ALL DEPENDS "${changelog}")
# All that the packages contain. The targets of the modules and libraries are dependencies of the programs.
add_custom_target(package_content
  DEPENDS package_files manuals topo-agentd topoctl topo-conformance)

foreach(name IN LISTS packages)
  list(GET components_${name} -1 meta)
  install(FILES "${changelog}" "${debian}/copyright"
    DESTINATION "/usr/share/doc/${name}" COMPONENT ${meta} EXCLUDE_FROM_ALL)
endforeach()

install(FILES packaging/systemd/topo-agentd.service
  DESTINATION /lib/systemd/system COMPONENT service EXCLUDE_FROM_ALL)
install(FILES packaging/etc/agent.conf DESTINATION /etc/topo-agent COMPONENT service EXCLUDE_FROM_ALL)
install(FILES "${debian}/topo-agent.sysusers" RENAME topo-agent.conf
  DESTINATION /usr/lib/sysusers.d COMPONENT service EXCLUDE_FROM_ALL)

set(TOPO_PACKAGE_MAINTAINER "Maintainers of topo-manager <maintainers@topo-manager.example>" CACHE STRING
  "The field Maintainer of the packages")
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME topo-manager)
set(CPACK_PACKAGE_CONTACT "${TOPO_PACKAGE_MAINTAINER}")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")  # each package has its own
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
  OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_GROUPING ONE_PER_GROUP)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)
set(CPACK_DEBIAN_PACKAGE_SOURCE topo-manager)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${CMAKE_LIBRARY_OUTPUT_DIRECTORY}")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

set(CPACK_COMPONENT_TOPO-AGENT_DESCRIPTION "Topology agent for CORBA clients
Serves the topology of a telecom network over CORBA: views of nodes and clock
links, attributes, and a notification for every change. The package contains
the daemon topo-agentd, its module and a service of systemd.")
set(CPACK_DEBIAN_TOPO-AGENT_PACKAGE_SECTION net)
set(CPACK_DEBIAN_TOPO-AGENT_PACKAGE_DEPENDS
  "init-system-helpers (>= 1.51), systemd | systemd-standalone-sysusers | systemd-sysusers")
set(CPACK_DEBIAN_TOPO-AGENT_PACKAGE_SUGGESTS topoctl)
set(CPACK_DEBIAN_TOPO-AGENT_PACKAGE_CONTROL_EXTRA)
foreach(script IN ITEMS conffiles postinst prerm postrm)
  configure_file("${debian}/topo-agent.${script}" "${CMAKE_CURRENT_BINARY_DIR}/packaging/topo-agent/${script}" COPYONLY)
  list(APPEND CPACK_DEBIAN_TOPO-AGENT_PACKAGE_CONTROL_EXTRA
    "${CMAKE_CURRENT_BINARY_DIR}/packaging/topo-agent/${script}")
endforeach()

set(CPACK_COMPONENT_TOPOCTL_DESCRIPTION "Command-line client of the topology agent
Shows the views of a topology agent as tables, JSON or CSV, changes attributes
and the network, and prints notifications as they arrive.")
set(CPACK_DEBIAN_TOPOCTL_PACKAGE_SECTION net)

set(CPACK_COMPONENT_TOPO-DEV_DESCRIPTION "Files for the development of topology agents
Headers, IDL files, examples and a CMake package for agents that load the
topology module, and topo-conformance, which checks such an agent.")
set(CPACK_DEBIAN_TOPO-DEV_PACKAGE_SECTION devel)
set(CPACK_DEBIAN_TOPO-DEV_PACKAGE_DEPENDS "topo-agent (= ${PROJECT_VERSION}), ${TOPO_PACKAGE_ORB}-dev, libace-dev")
set(CPACK_DEBIAN_TOPO-DEV_PACKAGE_SUGGESTS libcos4-dev)

set(CPACK_COMPONENTS_ALL)
foreach(name IN LISTS packages)
  list(APPEND CPACK_COMPONENTS_ALL ${components_${name}})
  string(TOUPPER "${name}" upper)
  set(CPACK_DEBIAN_${upper}_PACKAGE_NAME "${name}")
endforeach()
include(CPack)
foreach(name IN LISTS packages)
  cpack_add_component_group(${name})
  foreach(component IN LISTS components_${name})
    cpack_add_component(${component} GROUP ${name})
  endforeach()
endforeach()
