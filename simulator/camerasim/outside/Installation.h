// SPDX-License-Identifier: Apache-2.0
// Installation: where the programs and libraries of a simulated device are.

#pragma once

#include <string>

#include <android-base/result.h>

namespace orvo::simulator {

/** Absolute paths; every file was there when it was looked for. */
struct Installation {
    std::string camerasim;
    std::string serviceManager;
    std::string cameraProviderService;
    std::string simulatedProvider;
    std::string providerLibrary;    ///< the passthrough library that the device loads
    std::string mrProviderLibrary;  ///< the simulated MR provider

    /**
     * Programs beside this one, libraries in `../lib`.
     *
     * @return an error, one line that names the missing file, if the build or the installation is
     * not complete.
     */
    static android::base::Result<Installation> ofThisProgram();

    /** The directory that is used when none is named: installed beside this program, or the
     * source's.
     */
    static std::string defaultHeadset();
};

}  // namespace orvo::simulator
