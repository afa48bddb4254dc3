# What tests of all kinds have in common.

# Hands the suppressions of races and leaks that are meant to the sanitizer at work. One variable
# only, since gtest_discover_tests() does not carry a list.
set(suppressions "suppressions=${PROJECT_SOURCE_DIR}/tests/sanitizers")
if(ARA_PER_SANITIZE MATCHES "thread")
  set(ARA_PER_TEST_ENVIRONMENT "TSAN_OPTIONS=${suppressions}/tsan.supp:print_suppressions=0")
else()
  set(ARA_PER_TEST_ENVIRONMENT "LSAN_OPTIONS=${suppressions}/lsan.supp:print_suppressions=0")
endif()

# ara_per_add_run(<name> <label> <command>...): a test that runs a program in an empty directory.
function(ara_per_add_run name label)
  add_test(NAME ${name} COMMAND ${PROJECT_SOURCE_DIR}/scripts/in_empty_directory
    ${CMAKE_CURRENT_BINARY_DIR}/run_${name} ${ARGN})
  set_tests_properties(${name} PROPERTIES
    LABELS ${label} TIMEOUT 300 ENVIRONMENT "${ARA_PER_TEST_ENVIRONMENT}")
endfunction()
