# Checks that a shared object defines one dynamic symbol and no other.
#   cmake -DNM=nm -DMODULE=FILE -DEXPECTED=SYMBOL -P CheckExports.cmake

execute_process(
  COMMAND "${NM}" -D --defined-only "${MODULE}"
  OUTPUT_VARIABLE output
  OUTPUT_STRIP_TRAILING_WHITESPACE
  COMMAND_ERROR_IS_FATAL ANY)

string(REGEX REPLACE "[^\n]* [A-Za-z] ([^\n]*)" "\\1" symbols "${output}")
if(NOT symbols STREQUAL EXPECTED)
  message(FATAL_ERROR "${MODULE} must export ${EXPECTED} alone, but exports:\n${symbols}")
endif()
