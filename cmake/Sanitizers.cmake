# SPDX-License-Identifier: Apache-2.0
# ORVO_SANITIZER builds everything under a sanitizer of clang:
#
#   address   address, leaks and undefined behaviour; also what the fuzzers of fuzz/ need
#   thread    data races
#
# Sets ORVO_NO_UNDEFINED, the link option by which a shared library has to name all that it needs.
# Clang links a sanitizer's runtime into programs only, so libraries leave its functions open then.

set(ORVO_SANITIZER "" CACHE STRING "address, thread, or nothing")
set_property(CACHE ORVO_SANITIZER PROPERTY STRINGS "" address thread)

set(ORVO_NO_UNDEFINED LINKER:--no-undefined)
if(NOT ORVO_SANITIZER)
  return()
endif()

if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
  message(FATAL_ERROR "ORVO_SANITIZER needs clang: set CMAKE_CXX_COMPILER to clang++")
endif()
set(ORVO_NO_UNDEFINED "")

if(ORVO_SANITIZER STREQUAL "address")
  # Debian's libutils has no type information, which the check of virtual calls would need.
  set(flags -fsanitize=address,undefined -fno-sanitize=vptr,function)
  # Coverage for the fuzzers; without one of them in the program it does nothing.
  list(APPEND flags -fsanitize=fuzzer-no-link)
elseif(ORVO_SANITIZER STREQUAL "thread")
  set(flags -fsanitize=thread)
else()
  message(FATAL_ERROR "ORVO_SANITIZER is '${ORVO_SANITIZER}': write address or thread")
endif()
add_compile_options(${flags} -fno-sanitize-recover=all -fno-omit-frame-pointer)
add_link_options(${flags})

# How the runtimes behave is part of every program.
add_library(orvo_sanitizer_defaults OBJECT ${CMAKE_SOURCE_DIR}/tools/sanitizers/Defaults.cpp)
target_compile_definitions(orvo_sanitizer_defaults PRIVATE
  ORVO_TSAN_SUPPRESSIONS="${CMAKE_SOURCE_DIR}/tools/tsan-suppressions.txt")
if(ORVO_SANITIZER STREQUAL "thread")
  target_sources(orvo_sanitizer_defaults PRIVATE
    ${CMAKE_SOURCE_DIR}/tools/sanitizers/ThreadModel.cpp)
  target_link_libraries(orvo_sanitizer_defaults
    PRIVATE Android::utils CapnProto::kj ${CMAKE_DL_LIBS})
  # Also for libraries that are loaded later, or needed only by another one.
  target_link_options(orvo_sanitizer_defaults INTERFACE
    LINKER:--export-dynamic-symbol=_ZNK7android7RefBase9decStrongEPKv
    LINKER:--export-dynamic-symbol=_ZN7android7RefBase15onLastStrongRefEPKv
    LINKER:--export-dynamic-symbol=_ZN2kj1_5Mutex*)
endif()
link_libraries($<$<STREQUAL:$<TARGET_PROPERTY:TYPE>,EXECUTABLE>:orvo_sanitizer_defaults>)
