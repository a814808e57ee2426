# Functions for the target of a folder. Our own code is compiled with warnings as errors.

# topo_own_code(TARGET): marks a target as our own code, as opposed to generated code. Include paths begin at the root
# of the repository; scripts/check_tree.py checks which folders a folder may include.
function(topo_own_code target)
  target_include_directories(${target} PRIVATE "${PROJECT_SOURCE_DIR}")
  target_compile_options(${target} PRIVATE
    -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Wold-style-cast -Wcast-qual
    -Woverloaded-virtual -Wconversion -Werror)
  if(TOPO_TIDY)
    set_target_properties(${target} PROPERTIES CXX_CLANG_TIDY
      "${TOPO_CLANG_TIDY};--extra-arg=-Wthread-safety")
  endif()
endfunction()

# topo_library(NAME SOURCES... ): a static library of our own code.
function(topo_library target)
  add_library(${target} STATIC ${ARGN})
  topo_own_code(${target})
endfunction()

# topo_module_library(NAME SOURCES...): a static library of the module: its symbols
# are hidden, and it has no GNU unique symbols, which would prevent the unmapping of the module.
function(topo_module_library target)
  topo_library(${target} ${ARGN})
  topo_hidden(${target})
  # clang warns about a format that a function passes on.
  target_compile_options(${target} PRIVATE $<$<CXX_COMPILER_ID:Clang>:-Wno-format-security>)
endfunction()

function(topo_hidden target)
  set_target_properties(${target} PROPERTIES
    CXX_VISIBILITY_PRESET hidden
    VISIBILITY_INLINES_HIDDEN ON)
  # clang has no GNU unique symbols and does not know the option.
  target_compile_options(${target} PRIVATE $<$<CXX_COMPILER_ID:GNU>:-fno-gnu-unique>)
endfunction()
