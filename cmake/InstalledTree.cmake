# For tests that need the installed tree. Such a test requires the fixture `installed_tree`.
#   TOPO_INSTALLED_TREE     the prefix, with all components
#   TOPO_CONSUMER_OPTIONS   arguments of cmake that configure a project of its own with find_package(TopoManager) as this
#                           build was configured: generator, compiler, flags and the folders of the packages

set(TOPO_INSTALLED_TREE "${CMAKE_BINARY_DIR}/installed")

set(_flags "${CMAKE_CXX_FLAGS}")
if(TOPO_SANITIZE)
  string(APPEND _flags " -fsanitize=${TOPO_SANITIZE} -fno-omit-frame-pointer")
endif()
set(TOPO_CONSUMER_OPTIONS
  -G "${CMAKE_GENERATOR}"
  "-DCMAKE_CXX_COMPILER=${CMAKE_CXX_COMPILER}"
  "-DCMAKE_CXX_COMPILER_LAUNCHER=${CMAKE_CXX_COMPILER_LAUNCHER}"
  "-DCMAKE_CXX_FLAGS=${_flags}"
  "-DCMAKE_PREFIX_PATH=${TOPO_INSTALLED_TREE}")
if(TOPO_ORB STREQUAL "tao")
  list(APPEND TOPO_CONSUMER_OPTIONS "-DTAO_ROOT=${TAO_ROOT}")
endif()
