# SPDX-License-Identifier: Apache-2.0
# What tools/lint.sh compiles, with clang and only for what the compiler says of locks:
#
#   library_locks    the sources of provider/ and mapper/ against libc++, whose std::mutex carries the
#                    annotations that libstdc++'s lacks; must compile
#   missing_lock_*   the same mistake with either kind of lock; must not compile

if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
  return()
endif()

function(orvo_lock_check name)
  add_library(${name} OBJECT EXCLUDE_FROM_ALL ${ARGN})
  target_include_directories(${name} PRIVATE ${CMAKE_SOURCE_DIR})
  target_compile_options(${name} PRIVATE ${ORVO_CHECKED_LOCKS})
  target_link_libraries(${name} PRIVATE Android::base)
  # Static analysis takes the sources as they are built.
  set_target_properties(${name} PROPERTIES EXPORT_COMPILE_COMMANDS OFF)
endfunction()

set(sources)
foreach(part orvo_provider_core orvo_mapper)
  get_target_property(files ${part} SOURCES)
  get_target_property(directory ${part} SOURCE_DIR)
  list(TRANSFORM files PREPEND ${directory}/)
  list(APPEND sources ${files})
endforeach()
orvo_lock_check(library_locks ${sources})
target_link_libraries(library_locks PRIVATE orvo_provider_core orvo_mapper LibXml2::LibXml2)

orvo_lock_check(missing_lock_host tests/locks/MissingLock.cpp)
target_compile_definitions(missing_lock_host PRIVATE ORVO_HOST_MUTEX)
orvo_lock_check(missing_lock_library tests/locks/MissingLock.cpp)

foreach(name library_locks missing_lock_library)
  target_compile_options(${name} PRIVATE -stdlib=libc++ -D_LIBCPP_ENABLE_THREAD_SAFETY_ANNOTATIONS)
endforeach()
