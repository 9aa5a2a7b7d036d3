// SPDX-License-Identifier: Apache-2.0
// HeadsetDescription: which programs make up a simulated device, as its device.yaml says.

#pragma once

#include <string>
#include <vector>

#include <android-base/result.h>

namespace orvo::simulator {

/** One provider process. */
struct ProviderProgram {
    std::string instance;     ///< such as "external/0"; the description's own instance
    std::string description;  ///< absolute path of its YAML description
};

/** A device directory: device.yaml, a vendor tree, and the descriptions of its providers. */
struct HeadsetDescription {
    std::string directory;  ///< absolute
    std::string name;
    std::vector<std::string> serviceInstances;  ///< what the camera provider service serves
    std::vector<ProviderProgram> providers;     ///< in the order in which they are started
    /** Properties that init empties when the service has ended, before it starts it again. */
    std::vector<std::string> clearOnRestart;

    std::string vendorTree() const { return directory + "/vendor"; }

    /**
     * Reads `<directory>/device.yaml` and every description that it names.
     *
     * @return the description, or one line that says what is wrong and what to do.
     */
    static android::base::Result<HeadsetDescription> read(const std::string& directory);
    /** The same with all that is wrong added to `mistakes`, one line each. */
    static HeadsetDescription read(const std::string& directory,
                                   std::vector<std::string>* mistakes);
};

}  // namespace orvo::simulator
