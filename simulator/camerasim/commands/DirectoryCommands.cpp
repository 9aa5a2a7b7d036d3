// SPDX-License-Identifier: Apache-2.0
// DirectoryCommands: `camerasim new`, `check` and `keys`, which need no device that runs.

#include <iostream>
#include <string>
#include <vector>

#include "simulator/camerasim/commands/Command.h"
#include "simulator/camerasim/commands/Output.h"
#include "simulator/camerasim/outside/Installation.h"
#include "simulator/control/Complaint.h"
#include "simulator/description/DescriptionKeys.h"
#include "simulator/description/HeadsetCheck.h"

namespace orvo::simulator {

int writeHeadset(const Values& values) {
    const std::string directory = values.text("DEVICE_DIR");
    const auto made = makeHeadset(directory);
    if (!made) return complain(badUse(made.error().message()));
    std::cout << "written: " << directory << "; camerasim up " << directory << " boots it\n";
    return kAsExpected;
}

int checkFiles(const Values& values) {
    const std::string directory =
            values.has("DEVICE_DIR") ? values.text("DEVICE_DIR") : Installation::defaultHeadset();
    const std::vector<std::string> mistakes = checkHeadset(directory);
    for (const std::string& mistake : mistakes) std::cout << mistake << "\n";
    if (!mistakes.empty()) return complain(didNotHappen(counted(mistakes.size(), "mistake")));
    std::cout << "nothing is wrong with " << directory << "\n";
    return kAsExpected;
}

int printKeys(const Values& /*values*/) {
    std::cout << descriptionKeysPage();
    return kAsExpected;
}

}  // namespace orvo::simulator
