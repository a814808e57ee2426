# Manual pages and completions, made from what the built programs print. Committed are only the sections in
# packaging/man, which no program can print.
find_package(Python3 REQUIRED COMPONENTS Interpreter)
find_program(TOPO_GZIP gzip REQUIRED)

set(manuals "${CMAKE_CURRENT_BINARY_DIR}/manuals")
file(MAKE_DIRECTORY "${manuals}")
file(STRINGS packaging/debian/changelog manual_date REGEX "^ -- " LIMIT_COUNT 1)
string(REGEX REPLACE "^.*, ([0-9]+ [A-Z][a-z]+ [0-9]+) .*$" "\\1" manual_date "${manual_date}")

# compressed(INPUT OUTPUT): a compressed copy without names and times.
function(compressed input output)
  add_custom_command(OUTPUT "${output}"
    COMMAND sh -c "\"$1\" -9n <\"$2\" >\"$3\"" -- "${TOPO_GZIP}" "${input}" "${output}"
    DEPENDS "${input}"
    COMMENT "Compressing ${output}"
    VERBATIM)
endfunction()

# printed(OUTPUT PROGRAM COMMAND...): a file with the output of a command that runs a program of this build.
function(printed output program)
  add_custom_command(OUTPUT "${output}"
    COMMAND sh -c "output=$1 && shift && \"$@\" >\"$output.part\" && mv \"$output.part\" \"$output\"" -- "${output}" ${ARGN}
    DEPENDS ${program} scripts/man_page.py "${PROJECT_SOURCE_DIR}/packaging/man/${program}.man"
    COMMENT "Making ${output}"
    VERBATIM)
endfunction()

set(manual_pages)
function(manual_page program section component)
  set(page "${manuals}/${program}.${section}")
  set(more "${PROJECT_SOURCE_DIR}/packaging/man/${program}.man")
  printed("${page}" ${program} "${Python3_EXECUTABLE}" "${PROJECT_SOURCE_DIR}/scripts/man_page.py" "$<TARGET_FILE:${program}>"
    ${section} "${PROJECT_VERSION}" "${manual_date}" "${more}")
  compressed("${page}" "${page}.gz")
  install(FILES "${page}.gz" DESTINATION "${CMAKE_INSTALL_MANDIR}/man${section}" COMPONENT ${component})
  set(manual_pages ${manual_pages} "${page}.gz" PARENT_SCOPE)
endfunction()

manual_page(topoctl 1 topoctl)
manual_page(topo-agentd 8 agent)
manual_page(topo-conformance 1 sdk)
configure_file(packaging/man/topo-network.5.in "${manuals}/topo-network.5" @ONLY)
compressed("${manuals}/topo-network.5" "${manuals}/topo-network.5.gz")
install(FILES "${manuals}/topo-network.5.gz" DESTINATION "${CMAKE_INSTALL_MANDIR}/man5" COMPONENT agent)

foreach(shell IN ITEMS bash zsh)
  printed("${manuals}/completion.${shell}" topoctl "$<TARGET_FILE:topoctl>" completion ${shell})
endforeach()
install(FILES "${manuals}/completion.bash" RENAME topoctl
  DESTINATION "${CMAKE_INSTALL_DATADIR}/bash-completion/completions" COMPONENT topoctl)
install(FILES "${manuals}/completion.zsh" RENAME _topoctl
  DESTINATION "${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions" COMPONENT topoctl)

add_custom_target(manuals ALL DEPENDS ${manual_pages} "${manuals}/topo-network.5.gz"
  "${manuals}/completion.bash" "${manuals}/completion.zsh")
