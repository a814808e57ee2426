# idl_library(NAME IDL...): one shared library of the generated stubs and skeletons of IDL files.
#
# The library is shared because generated code registers itself with the ORB: the process must load the code once and
# must not unload it together with a module. Generated code is compiled without our warnings.
function(idl_library target)
  set(out "${CMAKE_CURRENT_BINARY_DIR}/generated")
  file(MAKE_DIRECTORY "${out}")
  set(sources)
  foreach(idl IN LISTS ARGN)
    get_filename_component(name "${idl}" NAME_WE)
    orb_generated("${name}" "${out}" generated)
    orb_idl_command("${CMAKE_CURRENT_SOURCE_DIR}/${idl}" "${out}" command)
    add_custom_command(
      OUTPUT ${generated}
      COMMAND ${command}
      DEPENDS ${ARGN}
      COMMENT "Compiling ${idl}"
      VERBATIM)
    list(APPEND sources ${generated})
  endforeach()

  add_library(${target} SHARED ${sources})
  target_include_directories(${target} SYSTEM PUBLIC
    "$<BUILD_INTERFACE:${out}>" "$<INSTALL_INTERFACE:$<INSTALL_PREFIX>/${TOPO_INSTALL_INCLUDEDIR}/generated>")
  target_link_libraries(${target} PUBLIC Orb::Orb)
  target_compile_features(${target} PUBLIC cxx_std_17)
  target_compile_options(${target} PRIVATE -w)
  set_target_properties(${target} PROPERTIES CXX_CLANG_TIDY "")
endfunction()
