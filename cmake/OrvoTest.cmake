# SPDX-License-Identifier: Apache-2.0
# orvo_add_test(NAME SOURCES ... LIBRARIES ... [TIMEOUT s] [DEFINITIONS ...] [LABELS ...]): one
# GoogleTest program; every test case in it becomes one test of CTest, so that each runs in a process
# of its own. A label is also a target, <label>_tests, which builds the programs that have it:
#
#   library   the tests of provider/ and mapper/
#   host      those of host/
#   device    what boots a simulated device

include(GoogleTest)

if(CMAKE_CROSSCOMPILING)
  add_library(orvo_emulated_exec OBJECT ${CMAKE_SOURCE_DIR}/tests/support/EmulatedExec.cpp)
  # Words of a C++ initializer: qemu-aarch64 is looked up once, here, for exec takes a path.
  list(GET CMAKE_CROSSCOMPILING_EMULATOR 0 emulator)
  list(SUBLIST CMAKE_CROSSCOMPILING_EMULATOR 1 -1 emulatorOptions)
  find_program(ORVO_EMULATOR_PROGRAM ${emulator} REQUIRED)
  set(words "\"${ORVO_EMULATOR_PROGRAM}\"")
  foreach(option ${emulatorOptions})
    string(APPEND words ",\"${option}\"")
  endforeach()
  target_compile_definitions(orvo_emulated_exec PRIVATE "ORVO_EMULATOR=${words}")
endif()

function(orvo_add_test name)
  cmake_parse_arguments(ARG "" "TIMEOUT" "SOURCES;LIBRARIES;DEFINITIONS;LABELS" ${ARGN})
  if(NOT ARG_TIMEOUT)
    set(ARG_TIMEOUT 60)
  endif()
  add_executable(${name} ${ARG_SOURCES})
  target_include_directories(${name} PRIVATE ${CMAKE_SOURCE_DIR})
  target_compile_definitions(${name} PRIVATE ${ARG_DEFINITIONS})
  target_link_libraries(${name} PRIVATE ${ARG_LIBRARIES} GTest::gmock_main)
  if(CMAKE_CROSSCOMPILING)
    target_link_libraries(${name} PRIVATE orvo_emulated_exec ${CMAKE_DL_LIBS})
  endif()
  foreach(label ${ARG_LABELS})
    if(NOT TARGET ${label}_tests)
      add_custom_target(${label}_tests)
    endif()
    add_dependencies(${label}_tests ${name})
  endforeach()
  # What the tests of the library say about the faults that they play; for tools/reliability.py.
  if("library" IN_LIST ARG_LABELS)
    set(reports XML_OUTPUT_DIR ${CMAKE_BINARY_DIR}/reports/${name})
    set(fixture FIXTURES_SETUP library_reports)
  endif()
  gtest_discover_tests(${name} DISCOVERY_MODE PRE_TEST TEST_PREFIX "${name}/" ${reports}
                       PROPERTIES TIMEOUT ${ARG_TIMEOUT} LABELS "${ARG_LABELS}" ${fixture})
endfunction()
