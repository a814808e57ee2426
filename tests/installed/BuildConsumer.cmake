# Builds and runs the project PROJECT with the tree PREFIX in the folder OUT. BUILT_ON: the versions that it must print;
# FLAGS: options that the compiler must get from the package.

string(REPLACE "," ";" options "${OPTIONS}")
execute_process(COMMAND "${CMAKE_COMMAND}" ${options} "-DCMAKE_PREFIX_PATH=${PREFIX}" -S "${PROJECT}" -B "${OUT}"
  COMMAND_ERROR_IS_FATAL ANY)
file(READ "${OUT}/compile_commands.json" commands)
foreach(flag IN LISTS FLAGS)
  string(FIND "${commands}" " ${flag} " position)
  if(position EQUAL -1)
    message(FATAL_ERROR "the compiler does not get ${flag}")
  endif()
endforeach()
set(targets)
if(TARGETS)
  set(targets --target ${TARGETS})
endif()
execute_process(COMMAND "${CMAKE_COMMAND}" --build "${OUT}" ${targets} COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND "${CMAKE_COMMAND}" -E env --unset=LD_LIBRARY_PATH "${OUT}/consumer"
  OUTPUT_VARIABLE output COMMAND_ERROR_IS_FATAL ANY)
if(NOT output STREQUAL "built on ${BUILT_ON}\n")
  message(FATAL_ERROR "expected 'built on ${BUILT_ON}', but got: ${output}")
endif()
