// SPDX-License-Identifier: Apache-2.0
// orvo-mapcheck: checks provider maps before a device has to.
#pragma once

#include "mapcheck/Options.h"

namespace orvo::mapcheck {

enum ExitStatus { CLEAN = 0, FINDINGS = 1, UNUSABLE = 2 };

/**
 * The whole program: findings go to standard output, complaints about the command line to standard
 * error. `readDescription` may be null. Returns the exit status. One thread, once.
 */
int checkMaps(int argc, char** argv, DescriptionReader readDescription);

}  // namespace orvo::mapcheck
