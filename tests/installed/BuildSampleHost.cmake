# Builds the sample host of the tree PREFIX in the folder OUT, twice: as it is, and with a network that cannot be read
# by the second init of the module. The test switch, which is on in that build, makes init read the network after the
# subscriptions.

string(REPLACE "," ";" options "${OPTIONS}")
set(sample "${PREFIX}/share/topo-manager/examples/host")

function(build source out)
  execute_process(COMMAND "${CMAKE_COMMAND}" ${options} "-DCMAKE_PREFIX_PATH=${PREFIX}" -DCMAKE_CXX_FLAGS=-Werror
    -S "${source}" -B "${out}" COMMAND_ERROR_IS_FATAL ANY)
  execute_process(COMMAND "${CMAKE_COMMAND}" --build "${out}" COMMAND_ERROR_IS_FATAL ANY)
endfunction()

function(replace file from to)
  file(READ "${file}" text)
  string(REPLACE "${from}" "${to}" changed "${text}")
  if(changed STREQUAL text)
    message(FATAL_ERROR "${file} does not contain ${from}")
  endif()
  file(WRITE "${file}" "${changed}")
endfunction()

build("${sample}" "${OUT}/sample")

set(failing "${OUT}/failing-source")
file(REMOVE_RECURSE "${failing}")
file(COPY "${sample}/" DESTINATION "${failing}")
replace("${failing}/Registration.cpp" "GetTestSwitch() { return false; }" "GetTestSwitch() { return true; }")
replace("${failing}/Domain.cpp" "#include <mutex>" "#include <mutex>\n#include \"platform/framework/ProcessException.h\"")
set(read "result->Value().insert(")
replace("${failing}/Domain.cpp" "${read}"
  "static int calls = 0;
    if (++calls == 2) {
      ProcessException failure;
      failure.errorCode = 77;
      failure.detail << \"no network\";
      throw failure;
    }
    ${read}")
build("${failing}" "${OUT}/failing")
