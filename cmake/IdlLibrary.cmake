# idl_library(NAME IDL...): one shared library of the generated stubs and skeletons of IDL files.
#
# Shared because generated code registers itself with the ORB: it must be there once in the process
# and stay when a module that uses it is unloaded. Generated code is not ours to warn about.
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
  target_include_directories(${target} SYSTEM PUBLIC "${out}")
  target_link_libraries(${target} PUBLIC Orb::Orb)
  target_compile_options(${target} PRIVATE -w)
  set_target_properties(${target} PROPERTIES CXX_CLANG_TIDY "")
endfunction()
