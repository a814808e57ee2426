# Configures the project PROJECT with ARGUMENT. With REASON, this must fail with a text that matches REASON; without,
# it must succeed.

string(REPLACE "," ";" options "${OPTIONS}")
execute_process(COMMAND "${CMAKE_COMMAND}" ${options} "${ARGUMENT}" -S "${PROJECT}" -B "${OUT}"
  RESULT_VARIABLE status OUTPUT_VARIABLE output ERROR_VARIABLE output)
if(NOT REASON)
  if(NOT status EQUAL 0)
    message(FATAL_ERROR "expected success, but got status ${status} and:\n${output}")
  endif()
  return()
endif()
string(REGEX REPLACE "[ \n]+" " " text "${output}")
if(status EQUAL 0 OR NOT text MATCHES "${REASON}")
  message(FATAL_ERROR "expected a failure with the reason '${REASON}', but got status ${status} and:\n${output}")
endif()
