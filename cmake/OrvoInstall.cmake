# SPDX-License-Identifier: Apache-2.0
# Installs the tools for a workstation, and packs them as orvo-camera-tools_<version>_<arch>.deb.
#
#   <prefix>/bin                       links to what a person calls
#   <prefix>/lib/orvo-camera/bin       the programs
#   <prefix>/lib/orvo-camera/lib       the libraries, whose names are the platform's
#   <prefix>/share/orvo-camera         the default device
#
# Programs and libraries find each other from where they are, so the whole can be moved. Included
# last, when all targets exist.

set(ORVO_HOME lib/orvo-camera)
set(ORVO_CALLED_PROGRAMS camerasim camera_framework orvo-mapcheck)
set(ORVO_INSTALLED_PROGRAMS
  ${ORVO_CALLED_PROGRAMS} hwservicemanager camera_provider_service simulated_provider)
set(ORVO_INSTALLED_LIBRARIES
  hwbinder hidlbase hidltransport cutils_properties cameraprovidershim
  android.hardware.graphics.common-1.0 android.hardware.camera.common-1.0
  android.hardware.camera.device-1.0 android.hardware.camera.device-3.2
  android.hardware.camera.provider-2.4 vendor.orvo.simulator-1.0)
# Copied into a device's /vendor before they are loaded.
set(ORVO_INSTALLED_MODULES orvo_provider orvo_simulated_mr_provider)

set_target_properties(${ORVO_INSTALLED_PROGRAMS} PROPERTIES
  INSTALL_RPATH "$ORIGIN/../lib;${ANDROID_LIBRARY_DIR}")
set_target_properties(${ORVO_INSTALLED_LIBRARIES} PROPERTIES
  INSTALL_RPATH "$ORIGIN;${ANDROID_LIBRARY_DIR}")
set_target_properties(${ORVO_INSTALLED_MODULES} PROPERTIES
  INSTALL_RPATH "${ANDROID_LIBRARY_DIR}")
# A copy no longer knows where its libraries are. With the older of the two kinds of run path, the
# loader also looks where the program would: the service that loads the copies knows.
foreach(target camera_provider_service ${ORVO_INSTALLED_MODULES})
  target_link_options(${target} PRIVATE LINKER:--disable-new-dtags)
endforeach()

install(TARGETS ${ORVO_INSTALLED_PROGRAMS} RUNTIME DESTINATION ${ORVO_HOME}/bin)
install(TARGETS ${ORVO_INSTALLED_LIBRARIES} ${ORVO_INSTALLED_MODULES}
        LIBRARY DESTINATION ${ORVO_HOME}/lib)
foreach(program ${ORVO_CALLED_PROGRAMS})
  set(link ${CMAKE_BINARY_DIR}/links/${program})
  file(MAKE_DIRECTORY ${CMAKE_BINARY_DIR}/links)
  file(CREATE_LINK ../${ORVO_HOME}/bin/${program} ${link} SYMBOLIC)
  install(FILES ${link} DESTINATION bin)
endforeach()
install(DIRECTORY simulator/devices/headset DESTINATION share/orvo-camera/devices)
install(FILES README.md CHANGELOG.md DESTINATION share/doc/orvo-camera-tools)
install(FILES LICENSE DESTINATION share/doc/orvo-camera-tools RENAME copyright)
install(DIRECTORY docs/ DESTINATION share/doc/orvo-camera-tools/docs FILES_MATCHING PATTERN *.md)
# bash looks for the completion of a command under the command's name.
install(FILES completions/camerasim.bash
  DESTINATION share/bash-completion/completions RENAME camerasim)

# For tests that need all of it.
add_custom_target(installed_files)
add_dependencies(installed_files
  ${ORVO_INSTALLED_PROGRAMS} ${ORVO_INSTALLED_LIBRARIES} ${ORVO_INSTALLED_MODULES})

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME orvo-camera-tools)
set(CPACK_PACKAGE_VENDOR "Orvo")
set(CPACK_PACKAGE_CONTACT "Orvo camera maintainers <camera@orvo.invalid>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Simulated camera devices and a checker of provider maps")
string(CONCAT CPACK_PACKAGE_DESCRIPTION
  "Boots simulated headsets whose cameras are served through the aggregating camera provider "
  "library, and checks the map files of real ones.")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION devel)
set(CPACK_DEBIAN_PACKAGE_DEPENDS bubblewrap)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})
include(CPack)
