# topo_tests(TARGET [TIMEOUT SECONDS] [COST SECONDS] [LABELS LABEL...] [FIXTURES FIXTURE...]): the tests of a GoogleTest
# executable, one ctest test each. ctest starts tests of a higher cost first. FIXTURES: the fixtures that the tests require.
#
# All tests are registered here, so every test has a timeout and a hanging test fails. The default timeout
# allows for sanitizers on a busy machine.
set(TOPO_TEST_TIMEOUT 300)

function(topo_tests target)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "TIMEOUT;COST" "LABELS;FIXTURES")
  if(NOT arg_TIMEOUT)
    set(arg_TIMEOUT ${TOPO_TEST_TIMEOUT})
  endif()
  set(properties)
  if(arg_LABELS)
    set(properties LABELS ${arg_LABELS})
  endif()
  if(arg_COST)
    list(APPEND properties COST ${arg_COST})
  endif()
  if(arg_FIXTURES)
    list(APPEND properties FIXTURES_REQUIRED ${arg_FIXTURES})
  endif()
  gtest_discover_tests(${target}
    DISCOVERY_MODE PRE_TEST
    DISCOVERY_TIMEOUT 60
    PROPERTIES TIMEOUT ${arg_TIMEOUT} ${properties})
endfunction()

# topo_unit_test(TARGET SOURCES... [LIBRARIES LIBRARY...]): a GoogleTest executable with topo_tests.
function(topo_unit_test target)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "LIBRARIES")
  add_executable(${target} ${arg_UNPARSED_ARGUMENTS})
  topo_own_code(${target})
  target_link_libraries(${target} PRIVATE ${arg_LIBRARIES} GTest::gmock GTest::gtest_main)
  if(TARGET topo_test_headers)
    target_precompile_headers(${target} REUSE_FROM topo_test_headers)
  endif()
  topo_tests(${target})
endfunction()
