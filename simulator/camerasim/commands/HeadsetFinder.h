// SPDX-License-Identifier: Apache-2.0
// HeadsetFinder: which devices run, and which of them a command is about.

#pragma once

#include <optional>
#include <string>
#include <vector>

#include <android-base/result.h>

#include "simulator/control/HeadsetState.h"

namespace orvo::simulator {

/** A device that runs: its control socket accepts. */
struct FoundHeadset {
    std::string root;                   ///< its temporary directory, absolute
    std::optional<HeadsetState> state;  ///< nothing if it does not answer
    std::string problem;                ///< why it does not
};

/** Roots of this user's running devices below $TMPDIR, sorted; directories left over are not. */
std::vector<std::string> runningRoots();

/** The running devices with what they tell of themselves. */
std::vector<FoundHeadset> runningDevices();

/**
 * The root of the device that a command is about.
 *
 * @param wanted a device's name, its description's directory, or its root; "" for the only one.
 * @return an error, one line that names the running devices, if none or several fit.
 */
android::base::Result<std::string> chooseDevice(const std::string& wanted);

/** As chooseDevice(); takes the root of a device that has ended, too. */
android::base::Result<std::string> chooseDeviceOrRemains(const std::string& wanted);

/** Asks the chosen device as askByName() does. */
android::base::Result<nlohmann::json> askDevice(const std::string& wanted,
                                                const nlohmann::json& request);

}  // namespace orvo::simulator
