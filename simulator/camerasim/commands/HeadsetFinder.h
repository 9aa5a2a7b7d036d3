// SPDX-License-Identifier: Apache-2.0
// HeadsetFinder: which headsets run, and which of them a command is about.

#pragma once

#include <optional>
#include <string>
#include <vector>

#include <android-base/result.h>

#include "simulator/control/Protocol.h"

namespace orvo::simulator {

/** A headset that runs: its control socket accepts. */
struct FoundHeadset {
    std::string root;                   ///< its temporary directory, absolute
    std::optional<HeadsetState> state;  ///< nothing if it does not answer
    std::string problem;                ///< why it does not
};

/** Roots of this user's running headsets below $TMPDIR, sorted; directories left over are not. */
std::vector<std::string> runningRoots();

/** The running headsets with what they tell of themselves. */
std::vector<FoundHeadset> runningHeadsets();

/**
 * The root of the headset that a command is about.
 *
 * @param wanted a headset's name, its description's directory, or its root; "" for the only one.
 * @return an error, one line that names the running ones, if none or several fit.
 */
android::base::Result<std::string> chooseHeadset(const std::string& wanted);

/** As chooseHeadset(); takes the root of a headset that has ended, too. */
android::base::Result<std::string> chooseHeadsetOrRemains(const std::string& wanted);

}  // namespace orvo::simulator
