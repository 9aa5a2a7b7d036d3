# SPDX-License-Identifier: Apache-2.0
# Imported targets for the platform libraries that Debian packages at the platform level of the
# device (29.0.6): Android::utils, Android::log, Android::cutils and Android::base.
#
# Debian installs them outside the default search paths and without pkg-config files, so the
# include directory and the run path are named here, once.

find_path(ANDROID_INCLUDE_DIR utils/RefBase.h PATH_SUFFIXES android REQUIRED)

foreach(library utils log cutils base)
  find_library(ANDROID_${library}_LIBRARY ${library}
               PATHS /usr/lib/${CMAKE_LIBRARY_ARCHITECTURE}/android NO_DEFAULT_PATH REQUIRED)
  get_filename_component(libraryDirectory "${ANDROID_${library}_LIBRARY}" DIRECTORY)
  add_library(Android::${library} SHARED IMPORTED GLOBAL)
  set_target_properties(Android::${library} PROPERTIES
    IMPORTED_LOCATION "${ANDROID_${library}_LIBRARY}"
    INTERFACE_INCLUDE_DIRECTORIES "${ANDROID_INCLUDE_DIR}"
    INTERFACE_SYSTEM_INCLUDE_DIRECTORIES "${ANDROID_INCLUDE_DIR}")
endforeach()

# Debian's libutils needs libraries of the same directory that name no run path of their own. What
# was cross-compiled looks for them in the root of the machine that it runs on.
set(ANDROID_LIBRARY_DIR "${libraryDirectory}")
if(CMAKE_SYSROOT)
  string(REPLACE "${CMAKE_SYSROOT}" "" ANDROID_LIBRARY_DIR "${libraryDirectory}")
endif()
add_link_options("-Wl,-rpath,${ANDROID_LIBRARY_DIR}" "-Wl,-rpath-link,${libraryDirectory}")
