# Settings of every target of the project.

set(TOPO_ORB "omniorb" CACHE STRING "The ORB to build on")
set_property(CACHE TOPO_ORB PROPERTY STRINGS omniorb tao)
if(TOPO_ORB STREQUAL "tao")
  set(TAO_ROOT "$ENV{TAO_ROOT}" CACHE PATH "The TAO to build on: ACE_wrappers/TAO, or a prefix")
  if(NOT TAO_ROOT)
    message(FATAL_ERROR "TAO_ROOT is not set: say where TAO is with -DTAO_ROOT=DIR")
  endif()
endif()

set(CMAKE_CXX_STANDARD 17)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/bin")
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/lib")
set(CMAKE_ARCHIVE_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/lib")

# Programs find the project's libraries by a relative path, so the build folder and the installed tree can be moved.
# The folder of an ORB outside of the system's path is absolute.
set(CMAKE_BUILD_RPATH_USE_ORIGIN ON)
set(CMAKE_INSTALL_RPATH_USE_LINK_PATH ON)

# The installed tree: cmake/TopoInstall.cmake. The private folder has the module and all
# libraries but those of topoctl.
include(GNUInstallDirs)
set(TOPO_INSTALL_INCLUDEDIR "${CMAKE_INSTALL_INCLUDEDIR}/topo-manager")
set(TOPO_INSTALL_PRIVATEDIR "${CMAKE_INSTALL_LIBDIR}/topo-manager")

if(NOT CMAKE_BUILD_TYPE)
  set(CMAKE_BUILD_TYPE Release CACHE STRING "" FORCE)
endif()

find_program(TOPO_CCACHE ccache)
if(TOPO_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  set(CMAKE_CXX_COMPILER_LAUNCHER "${TOPO_CCACHE}")
endif()

if(TOPO_SANITIZE)
  add_compile_options("-fsanitize=${TOPO_SANITIZE}" -fno-omit-frame-pointer
                      -fno-sanitize-recover=all)
  add_link_options("-fsanitize=${TOPO_SANITIZE}")
endif()

if(TOPO_TIDY)
  find_program(TOPO_CLANG_TIDY clang-tidy REQUIRED)
endif()
