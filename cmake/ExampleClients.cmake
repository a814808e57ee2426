# The clients of examples/client, built and run as their users do: from Debian's packages and idl/ alone.
#   example_clients      target; builds the C++ client with its Makefile
#   TOPO_EXAMPLE_CLIENT  the C++ client
#   TOPO_TCLSH           the interpreter of the Tcl client

# The clients use Debian's packages, so a build on another ORB has none of this.
if(NOT TOPO_ORB STREQUAL "omniorb")
  return()
endif()

find_program(TOPO_MAKE make REQUIRED)
find_program(TOPO_TCLSH tclsh REQUIRED)

set(_example_out "${CMAKE_BINARY_DIR}/examples/client")
set(TOPO_EXAMPLE_CLIENT "${_example_out}/topo-client")
file(GLOB _example_inputs CONFIGURE_DEPENDS
  "${PROJECT_SOURCE_DIR}/examples/client/*" "${PROJECT_SOURCE_DIR}/idl/*.idl"
  "${PROJECT_SOURCE_DIR}/idl/agent/*.idl")

add_custom_command(
  OUTPUT "${TOPO_EXAMPLE_CLIENT}"
  COMMAND "${TOPO_MAKE}" --silent -C "${PROJECT_SOURCE_DIR}/examples/client" "OUT=${_example_out}"
          "CXX=${CMAKE_CXX_COMPILER_LAUNCHER} ${CMAKE_CXX_COMPILER}" CXXFLAGS=-std=c++17
  DEPENDS ${_example_inputs}
  COMMENT "Building the client of examples/client"
  VERBATIM)
add_custom_target(example_clients ALL DEPENDS "${TOPO_EXAMPLE_CLIENT}")
