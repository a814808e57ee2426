# Unpacks topo-agent and topo-dev of the folder PACKAGES, and builds and runs the project PROJECT with them. The other
# variables are those of tests/installed/BuildConsumer.cmake.
file(REMOVE_RECURSE "${OUT}")
file(MAKE_DIRECTORY "${OUT}")
foreach(name IN ITEMS topo-agent topo-dev)
  file(GLOB package "${PACKAGES}/${name}_*.deb")
  execute_process(COMMAND dpkg-deb --extract "${package}" "${OUT}/root" COMMAND_ERROR_IS_FATAL ANY)
endforeach()
set(PREFIX "${OUT}/root/usr")
set(OUT "${OUT}/build")
set(TARGETS consumer)
include("${CMAKE_CURRENT_LIST_DIR}/../installed/BuildConsumer.cmake")
