# Checks that the dynamic linker finds every direct and indirect library of programs and libraries without
# LD_LIBRARY_PATH.
#   cmake -DFILES=FILE,FILE... -P CheckLibraries.cmake

string(REPLACE "," ";" files "${FILES}")
foreach(file IN LISTS files)
  execute_process(
    COMMAND "${CMAKE_COMMAND}" -E env --unset=LD_LIBRARY_PATH ldd "${file}"
    OUTPUT_VARIABLE output
    COMMAND_ERROR_IS_FATAL ANY)
  string(REGEX MATCHALL "[^\n\t ]+ => not found" missing "${output}")
  if(missing)
    message(FATAL_ERROR "${file}: ${missing}")
  endif()
endforeach()
