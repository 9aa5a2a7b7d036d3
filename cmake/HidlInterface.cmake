# SPDX-License-Identifier: Apache-2.0
# Compiles .hal packages with the platform's own compiler, hidl-gen, whose output is used unmodified
# and never committed.
#
#   hidl_generate(<package@x.y> TARGET <name> ROOTS <prefix:dir>... [DEPENDS <name>...])
#
# generates the C++ of one package. <name> becomes a target that is up to date when all of it is
# there; its property HIDL_SOURCES lists what there is to compile. ROOTS are directories of .hal
# files, absolute or relative to the calling directory, beside those of this repository. DEPENDS
# names the packages that this one imports, by their targets: they are generated first, and a change
# of theirs generates this one again.
#
#   hidl_interface(<package@x.y> TARGET <target> ROOTS <prefix:dir>... [DEPENDS <target>...])
#
# does so and compiles it into the shared library <package@x.y>.so. DEPENDS names the libraries of
# the packages that it imports; those of the base packages are always there.

find_program(HIDL_GEN hidl-gen REQUIRED)

set(HIDL_GENERATED_DIR ${CMAKE_BINARY_DIR}/generated/hidl)
get_filename_component(HIDL_PLATFORM_DIR ${CMAKE_CURRENT_LIST_DIR}/../host/interfaces ABSOLUTE)
set(HIDL_PLATFORM_ROOTS
  android.hidl:${HIDL_PLATFORM_DIR}/hidl
  android.hardware:${HIDL_PLATFORM_DIR}/hardware)

# The directory of a package: <outDir> is where its .hal files are, <outPath> where its headers are
# below an include directory.
function(_hidl_locate package outDir outPath)
  if(NOT package MATCHES "^([a-zA-Z0-9_.]+)@([0-9]+\\.[0-9]+)$")
    message(FATAL_ERROR "'${package}' is no HIDL package: write it as name@major.minor")
  endif()
  string(REPLACE "." "/" path "${CMAKE_MATCH_1}")
  set(name "${CMAKE_MATCH_1}")
  set(version "${CMAKE_MATCH_2}")
  foreach(root ${ARGN})
    string(REGEX MATCH "^([^:]*):(.*)$" _ "${root}")
    set(prefix "${CMAKE_MATCH_1}")
    set(dir "${CMAKE_MATCH_2}")
    string(FIND "${name}." "${prefix}." position)
    if(position EQUAL 0)
      string(LENGTH "${prefix}" length)
      string(SUBSTRING "${name}" ${length} -1 rest)
      string(REPLACE "." "/" rest "${rest}")
      set(${outDir} "${dir}${rest}/${version}" PARENT_SCOPE)
      set(${outPath} "${path}/${version}" PARENT_SCOPE)
      return()
    endif()
  endforeach()
  message(FATAL_ERROR "no root for the HIDL package ${package}: add ROOTS <prefix>:<directory>")
endfunction()

function(hidl_generate package)
  cmake_parse_arguments(ARG "" "TARGET" "ROOTS;DEPENDS" ${ARGN})
  set(roots ${HIDL_PLATFORM_ROOTS})
  foreach(root ${ARG_ROOTS})
    string(REGEX MATCH "^([^:]*):(.*)$" _ "${root}")
    set(prefix "${CMAKE_MATCH_1}")
    get_filename_component(dir "${CMAKE_MATCH_2}" ABSOLUTE)
    list(APPEND roots "${prefix}:${dir}")
  endforeach()
  list(REMOVE_DUPLICATES roots)
  _hidl_locate(${package} dir path ${roots})

  file(GLOB halFiles CONFIGURE_DEPENDS ${dir}/*.hal)
  if(NOT halFiles)
    message(FATAL_ERROR "the HIDL package ${package} has no .hal files in ${dir}")
  endif()
  set(output ${HIDL_GENERATED_DIR}/${path})
  set(headers)
  set(sources)
  foreach(halFile ${halFiles})
    get_filename_component(name ${halFile} NAME_WE)
    if(name STREQUAL "types")
      list(APPEND headers ${output}/types.h ${output}/hwtypes.h)
      list(APPEND sources ${output}/types.cpp)
    else()
      string(SUBSTRING ${name} 1 -1 name)
      foreach(kind I IHw BnHw BpHw Bs)
        list(APPEND headers ${output}/${kind}${name}.h)
      endforeach()
      list(APPEND sources ${output}/${name}All.cpp)
    endif()
  endforeach()

  # Every .hal file that this package can see; all are small, so no finer than that.
  set(importedFiles)
  foreach(dependency ${ARG_DEPENDS})
    get_target_property(files ${dependency} HIDL_FILES)
    list(APPEND importedFiles ${files})
  endforeach()
  set(rootArguments)
  foreach(root ${roots})
    list(APPEND rootArguments -r ${root})
  endforeach()
  add_custom_command(
    OUTPUT ${headers} ${sources}
    COMMAND ${HIDL_GEN} -R -p / ${rootArguments} -L c++ -o ${HIDL_GENERATED_DIR} ${package}
    DEPENDS ${halFiles} ${importedFiles}
    COMMENT "Generating C++ of ${package}"
    VERBATIM)
  add_custom_target(${ARG_TARGET} DEPENDS ${headers} ${sources})
  add_dependencies(generated_headers ${ARG_TARGET})
  if(ARG_DEPENDS)
    add_dependencies(${ARG_TARGET} ${ARG_DEPENDS})
  endif()
  list(APPEND halFiles ${importedFiles})
  list(REMOVE_DUPLICATES halFiles)
  set_target_properties(${ARG_TARGET} PROPERTIES HIDL_FILES "${halFiles}" HIDL_SOURCES "${sources}")

  # Generated classes leave "override" out here and there, which only clang minds.
  set_source_files_properties(${sources} PROPERTIES
    GENERATED TRUE
    COMPILE_OPTIONS $<$<CXX_COMPILER_ID:Clang,AppleClang>:-Wno-inconsistent-missing-override>)
endfunction()

function(hidl_interface package)
  cmake_parse_arguments(ARG "" "TARGET" "ROOTS;DEPENDS" ${ARGN})
  set(generatedDependencies hidl_generated_base)
  foreach(dependency ${ARG_DEPENDS})
    list(APPEND generatedDependencies ${dependency}-generated)
  endforeach()
  hidl_generate(${package} TARGET ${ARG_TARGET}-generated ROOTS ${ARG_ROOTS}
                DEPENDS ${generatedDependencies})
  get_target_property(sources ${ARG_TARGET}-generated HIDL_SOURCES)

  add_library(${ARG_TARGET} SHARED ${sources})
  add_dependencies(${ARG_TARGET} ${ARG_TARGET}-generated)
  set_target_properties(${ARG_TARGET} PROPERTIES PREFIX "" OUTPUT_NAME ${package})
  target_link_libraries(${ARG_TARGET} PUBLIC hidltransport ${ARG_DEPENDS})
  target_link_options(${ARG_TARGET} PRIVATE ${ORVO_NO_UNDEFINED})
endfunction()
