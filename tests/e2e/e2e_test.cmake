include_guard(GLOBAL)

# qv_add_e2e_test(<name> SOURCES…): a test of whole runs, with the processes that it starts built before it.
function(qv_add_e2e_test name)
  add_executable(${name} ${ARGN})
  target_link_libraries(${name} PRIVATE qv_e2e_harness GTest::gmock_main qv_warnings)
  qv_discover_tests(${name} LABELS e2e)
endfunction()
