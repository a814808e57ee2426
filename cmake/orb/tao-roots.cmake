# Sets TOPO_TAO_ROOTS, the folders of TAO and its ACE, in the order of the search.
#
# TAO_ROOT, a variable or an environment variable, is the folder TAO of a built source tree (ACE_wrappers/TAO), or
# the prefix of an installed TAO and ACE. ACE_ROOT, likewise, is the folder of an ACE outside of these folders, or
# ACE_wrappers when TAO_ROOT is not set.

set(_tao_root "${TAO_ROOT}")
if(NOT _tao_root)
  set(_tao_root "$ENV{TAO_ROOT}")
endif()
set(TOPO_TAO_ROOTS ${_tao_root})
# A source tree has ACE in the parent folder of TAO; a prefix has both in the same folders.
if(EXISTS "${_tao_root}/tao/corba.h")
  list(APPEND TOPO_TAO_ROOTS "${_tao_root}/..")
endif()
foreach(_ace_root IN ITEMS ${ACE_ROOT} $ENV{ACE_ROOT})
  list(APPEND TOPO_TAO_ROOTS "${_ace_root}" "${_ace_root}/TAO")
endforeach()
