# Makes the packages of the build with the configuration CONFIG into OUT.
file(REMOVE_RECURSE "${OUT}")
execute_process(COMMAND "${CPACK}" --config "${CONFIG}" -G DEB -B "${OUT}" COMMAND_ERROR_IS_FATAL ANY)
file(REMOVE_RECURSE "${OUT}/_CPack_Packages")
