# Installs the build BUILD of the sources SOURCE into PREFIX, and checks that the CMake package and the run paths name
# no folder of the build or of the sources.

file(REMOVE_RECURSE "${PREFIX}")
execute_process(COMMAND "${CMAKE_COMMAND}" --install "${BUILD}" --prefix "${PREFIX}"
  OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)

function(check_text text file)
  foreach(folder IN ITEMS "${BUILD}" "${SOURCE}" "${PREFIX}")
    string(FIND "${text}" "${folder}" position)
    if(NOT position EQUAL -1)
      message(SEND_ERROR "${file} names ${folder}")
    endif()
  endforeach()
endfunction()

file(GLOB_RECURSE texts "${PREFIX}/*.cmake" "${PREFIX}/include/*")
foreach(file IN LISTS texts)
  file(READ "${file}" text)
  check_text("${text}" "${file}")
endforeach()

file(GLOB_RECURSE binaries "${PREFIX}/bin/*" "${PREFIX}/*.so")
foreach(file IN LISTS binaries)
  execute_process(COMMAND objdump -p "${file}" OUTPUT_VARIABLE text COMMAND_ERROR_IS_FATAL ANY)
  string(REGEX MATCHALL "(RPATH|RUNPATH) [^\n]*" run_path "${text}")
  check_text("${run_path}" "${file}")
endforeach()
