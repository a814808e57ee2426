# Builds and runs the project PROJECT with the tree PREFIX in the folder OUT.

string(REPLACE "," ";" options "${OPTIONS}")
execute_process(COMMAND "${CMAKE_COMMAND}" ${options} "-DCMAKE_PREFIX_PATH=${PREFIX}" -S "${PROJECT}" -B "${OUT}"
  COMMAND_ERROR_IS_FATAL ANY)
set(targets)
if(TARGETS)
  set(targets --target ${TARGETS})
endif()
execute_process(COMMAND "${CMAKE_COMMAND}" --build "${OUT}" ${targets} COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND "${CMAKE_COMMAND}" -E env --unset=LD_LIBRARY_PATH "${OUT}/consumer" COMMAND_ERROR_IS_FATAL ANY)
