include(GoogleTest)

# zelv_add_tests(TARGET LABEL SECONDS [PREFIX]): the tests of an executable, each a test of its own,
# with a process of its own and SECONDS of time.
#
# Under a sanitizer a process takes longer to start than most tests take: there the executable runs
# them in four parts, which go side by side.
function(zelv_add_tests target label seconds)
  set(prefix "${ARGV3}")
  if(NOT ZELV_SANITIZE)
    gtest_discover_tests(${target} TEST_PREFIX "${prefix}" DISCOVERY_TIMEOUT 60
                         PROPERTIES LABELS ${label} TIMEOUT ${seconds})
    return()
  endif()
  set(parts 4)
  math(EXPR last "${parts} - 1")
  foreach(part RANGE ${last})
    add_test(NAME ${target}.${part} COMMAND ${target} --gtest_brief=1)
    set_tests_properties(
      ${target}.${part}
      PROPERTIES LABELS ${label} TIMEOUT 900 ENVIRONMENT
                 "GTEST_TOTAL_SHARDS=${parts};GTEST_SHARD_INDEX=${part}")
  endforeach()
endfunction()
