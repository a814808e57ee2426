# Configures the project PROJECT with ARGUMENT, which must fail with a text that matches REASON.

string(REPLACE "," ";" options "${OPTIONS}")
execute_process(COMMAND "${CMAKE_COMMAND}" ${options} "${ARGUMENT}" -S "${PROJECT}" -B "${OUT}"
  RESULT_VARIABLE status OUTPUT_VARIABLE output ERROR_VARIABLE output)
string(REGEX REPLACE "[ \n]+" " " text "${output}")
if(status EQUAL 0 OR NOT text MATCHES "${REASON}")
  message(FATAL_ERROR "expected a failure with the reason '${REASON}', but got status ${status} and:\n${output}")
endif()
