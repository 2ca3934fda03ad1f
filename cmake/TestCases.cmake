# add_test_cases(PROGRAM [OPTION...]): a test for each case of a GoogleTest program, each a process of its
# own; OPTION... are those of gtest_discover_tests. Under a sanitizer, where starting a process takes
# longer than most cases, a few processes share the cases, and each writes what became of its own to
# shards/ (tools/count-tests adds that up).
include(GoogleTest)

function(add_test_cases program)
  if(NOT KESTRIVANE_SANITIZER)
    gtest_discover_tests(${program} NO_PRETTY_VALUES DISCOVERY_TIMEOUT 60 ${ARGN}
      PROPERTIES PROCESSORS 2)
    return()
  endif()
  set(count 6)
  math(EXPR last "${count} - 1")
  foreach(index RANGE ${last})
    set(name ${program}.shard-${index})
    add_test(NAME ${name} COMMAND ${program})
    set_tests_properties(${name} PROPERTIES PROCESSORS 2 TIMEOUT 900 ENVIRONMENT
      "GTEST_TOTAL_SHARDS=${count};GTEST_SHARD_INDEX=${index};GTEST_OUTPUT=xml:${CMAKE_BINARY_DIR}/shards/${name}.xml")
  endforeach()
endfunction()
