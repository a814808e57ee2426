# topo_allocator: the allocator of topo-agentd, to be linked to programs only: a library cannot choose the allocator of
# its process. docs/benchmarks.md compares the allocators.
set(TOPO_ALLOCATOR "tcmalloc" CACHE STRING "The allocator of topo-agentd; sanitizers bring their own")
set_property(CACHE TOPO_ALLOCATOR PROPERTY STRINGS tcmalloc system)

add_library(topo_allocator INTERFACE)
if(TOPO_ALLOCATOR STREQUAL "tcmalloc" AND NOT TOPO_SANITIZE)
  find_library(TOPO_TCMALLOC tcmalloc_minimal)
  if(NOT TOPO_TCMALLOC)
    message(FATAL_ERROR "tcmalloc is missing: install libgoogle-perftools-dev, or use -DTOPO_ALLOCATOR=system")
  endif()
  target_link_libraries(topo_allocator INTERFACE
    -Wl,--push-state,--no-as-needed "${TOPO_TCMALLOC}" -Wl,--pop-state)
elseif(NOT TOPO_ALLOCATOR MATCHES "^(tcmalloc|system)$")
  message(FATAL_ERROR "TOPO_ALLOCATOR is ${TOPO_ALLOCATOR}, not tcmalloc or system")
endif()
