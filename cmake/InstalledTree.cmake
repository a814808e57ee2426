# For tests that need the installed tree. Such a test requires the fixture `installed_tree`.
#   TOPO_INSTALLED_TREE     the prefix, with all components
#   TOPO_CONSUMER_OPTIONS   arguments of cmake that configure a project of its own with find_package(TopoManager) as this
#                           build was configured: generator, compiler, flags and the folders of the packages
#   TOPO_CONSUMER_FLAGS     options that the compiler must get from the package
#   TOPO_WITHOUT_NOTIFICATION   an argument of cmake: the ORB has no stubs of the notification service
#   topo_fake_orb_version(FOLDER VERSION)   a folder of headers for the variable OMNIORB_INCLUDE_DIR or TAO_INCLUDE_DIR,
#                           in which the ORB has that version

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
set(TOPO_CONSUMER_FLAGS)
set(TOPO_WITHOUT_NOTIFICATION -DOMNIORB_SERVICES_INCLUDE_DIR=)
if(TOPO_ORB STREQUAL "tao")
  list(APPEND TOPO_CONSUMER_OPTIONS "-DTAO_ROOT=${TAO_ROOT}")
  set(TOPO_CONSUMER_FLAGS -fno-delete-null-pointer-checks)
  set(TOPO_WITHOUT_NOTIFICATION -DTAO_CosNotification_LIBRARY=)
endif()

function(topo_fake_orb_version folder version)
  file(WRITE "${folder}/omniORB4/acconfig.h" "#define PACKAGE_VERSION \"${version}\"\n")
  file(WRITE "${folder}/tao/Version.h" "#define TAO_VERSION \"${version}\"\n")
endfunction()
