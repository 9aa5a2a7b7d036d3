# SPDX-License-Identifier: Apache-2.0
# orvo_add_test(NAME SOURCES ... LIBRARIES ...): one GoogleTest program; every test case in it
# becomes one test of CTest, so that each runs in a process of its own.

include(GoogleTest)

function(orvo_add_test name)
  cmake_parse_arguments(ARG "" "TIMEOUT" "SOURCES;LIBRARIES;DEFINITIONS" ${ARGN})
  if(NOT ARG_TIMEOUT)
    set(ARG_TIMEOUT 60)
  endif()
  add_executable(${name} ${ARG_SOURCES})
  target_include_directories(${name} PRIVATE ${CMAKE_SOURCE_DIR})
  target_compile_definitions(${name} PRIVATE ${ARG_DEFINITIONS})
  target_link_libraries(${name} PRIVATE ${ARG_LIBRARIES} GTest::gmock_main)
  gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST TEST_PREFIX "${name}/"
                       PROPERTIES TIMEOUT ${ARG_TIMEOUT})
endfunction()
