# Installs each component of the build BUILD alone into OUT, and compares its files with those that docs/sdk.md
# describes. SOURCE: the sources; LIBDIR: the folder of libraries; ORB_HEADERS: the wrappers of the ORB's headers.

file(REMOVE_RECURSE "${OUT}")

# all_of(VARIABLE FOLDER INSTALLED PATTERN): adds the files of a folder of the sources to VARIABLE, as they are installed.
macro(all_of variable folder installed pattern)
  file(GLOB_RECURSE found RELATIVE "${SOURCE}/${folder}" "${SOURCE}/${folder}/${pattern}")
  list(TRANSFORM found PREPEND "${installed}/")
  list(APPEND ${variable} ${found})
endmacro()

set(private "${LIBDIR}/topo-manager")
set(headers include/topo-manager)
set(data share/topo-manager)
set(doc share/doc/topo-manager)

set(module_files "${private}/libtopo_idl.so" "${private}/libtopo_host_defaults.so" "${private}/libtopo_agent_idl.so"
  "${private}/libzu_corba_topo.so")

set(sdk_files bin/topo-conformance share/man/man1/topo-conformance.1.gz "${private}/libtopo_conformance_probe.so"
  "${headers}/platform/README.md" "${data}/host_defaults/InterfaceBuffers.h"
  "${headers}/orb/corba.h" "${headers}/orb/notification.h"
  "${headers}/idl/NotificationLayout.h" "${headers}/idl/ObjectKeys.h")
all_of(sdk_files include/platform "${headers}/platform" "*.h")
all_of(sdk_files "${ORB_HEADERS}/idl" "${headers}/orb/idl" "*.h")
list(REMOVE_ITEM sdk_files "${headers}/orb/idl/TopoAgent.h")
all_of(sdk_files idl "${data}/idl" "*.idl")
all_of(sdk_files examples "${data}/examples" "*")
all_of(sdk_files host_defaults "${data}/host_defaults" "*.cpp")
list(FILTER sdk_files EXCLUDE REGEX "/build/")  # of a developer who built an example in its folder

set(agent_files bin/topo-agentd share/man/man8/topo-agentd.8.gz share/man/man5/topo-network.5.gz
  "${private}/libtopo_agent.so")
all_of(agent_files networks "${data}/networks" "*")

set(topoctl_files bin/topoctl share/man/man1/topoctl.1.gz share/bash-completion/completions/topoctl
  share/zsh/vendor-completions/_topoctl "${private}/topoctl/libtopo_idl.so" "${private}/topoctl/libtopo_agent_idl.so")

set(doc_files "${doc}/README.md")
all_of(doc_files docs "${doc}/docs" "*")

function(check_component component)
  execute_process(COMMAND "${CMAKE_COMMAND}" --install "${BUILD}" --component ${component} --prefix "${OUT}/${component}"
    OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
  file(GLOB_RECURSE installed RELATIVE "${OUT}/${component}" "${OUT}/${component}/*")
  set(missing ${ARGN})
  list(REMOVE_ITEM missing "" ${installed})
  if(missing)
    message(SEND_ERROR "the component ${component} lacks ${missing}")
  endif()
  if(component STREQUAL sdk)  # whose further headers and package files depend on the ORB and on the build type
    list(FILTER installed EXCLUDE REGEX "^(${headers}|${LIBDIR}/cmake/TopoManager)/")
  endif()
  list(REMOVE_ITEM installed "" ${ARGN})
  if(installed)
    message(SEND_ERROR "the component ${component} should not have ${installed}")
  endif()
endfunction()

check_component(module ${module_files})
check_component(sdk ${sdk_files})
check_component(agent ${agent_files})
check_component(topoctl ${topoctl_files})
check_component(doc ${doc_files})
