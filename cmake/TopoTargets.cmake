# One call a folder: targets of our own code, with warnings as errors.

# topo_own_code(TARGET): our own code, as opposed to what a generator wrote. Its includes begin at the root of the
# repository; scripts/check_tree.py says which folders a folder may include.
function(topo_own_code target)
  target_include_directories(${target} PRIVATE "${PROJECT_SOURCE_DIR}")
  target_compile_options(${target} PRIVATE
    -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Wold-style-cast -Wcast-qual
    -Woverloaded-virtual -Wconversion -Werror)
  if(TOPO_TIDY)
    set_target_properties(${target} PROPERTIES CXX_CLANG_TIDY "${TOPO_CLANG_TIDY}")
  endif()
endfunction()

# topo_library(NAME SOURCES... ): a static library of our own code.
function(topo_library target)
  add_library(${target} STATIC ${ARGN})
  topo_own_code(${target})
endfunction()

# topo_module_library(NAME SOURCES...): the same for code that becomes part of the module: nothing of it
# is visible outside, and nothing of it keeps the module from being unmapped (GNU unique symbols do).
function(topo_module_library target)
  topo_library(${target} ${ARGN})
  topo_hidden(${target})
endfunction()

function(topo_hidden target)
  set_target_properties(${target} PROPERTIES
    CXX_VISIBILITY_PRESET hidden
    VISIBILITY_INLINES_HIDDEN ON)
  target_compile_options(${target} PRIVATE -fno-gnu-unique)
endfunction()
