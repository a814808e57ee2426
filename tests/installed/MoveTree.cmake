# Moves a copy of the tree PREFIX, then runs the programs and builds the project PROJECT with the moved tree.

set(moved "${OUT}/moved")
file(REMOVE_RECURSE "${moved}")
file(MAKE_DIRECTORY "${moved}")
file(COPY "${PREFIX}/" DESTINATION "${OUT}/copy")
file(RENAME "${OUT}/copy" "${moved}/tree")
set(PREFIX "${moved}/tree")

# The libraries of this project come from the moved tree.
file(GLOB_RECURSE binaries "${PREFIX}/bin/*" "${PREFIX}/*.so")
foreach(file IN LISTS binaries)
  execute_process(COMMAND "${CMAKE_COMMAND}" -E env --unset=LD_LIBRARY_PATH ldd "${file}"
    OUTPUT_VARIABLE libraries COMMAND_ERROR_IS_FATAL ANY)
  string(REGEX MATCHALL "libtopo[^\n]*" own "${libraries}")
  foreach(library IN LISTS own)
    if(NOT library MATCHES " => ${PREFIX}/")
      message(SEND_ERROR "${file}: ${library}")
    endif()
  endforeach()
endforeach()

# The check of the options includes the module, which is found relative to the program.
execute_process(COMMAND "${PREFIX}/bin/topo-agentd" --check-config --endpoint 127.0.0.1:0
  WORKING_DIRECTORY "${moved}" COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND "${PREFIX}/bin/topoctl" --version COMMAND_ERROR_IS_FATAL ANY)

set(OUT "${moved}/build")
set(TARGETS consumer)
include("${CMAKE_CURRENT_LIST_DIR}/BuildConsumer.cmake")
