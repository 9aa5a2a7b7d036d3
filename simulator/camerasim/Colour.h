// SPDX-License-Identifier: Apache-2.0
// Colour: whether a person's terminal is to be painted on.

#pragma once

#include <unistd.h>

#include <cstdlib>

namespace orvo::simulator {

/** Whether stdout is a terminal whose user has not set NO_COLOR. */
inline bool wantsColour() {
    const char* refused = getenv("NO_COLOR");
    return isatty(STDOUT_FILENO) != 0 && (refused == nullptr || *refused == '\0');
}

}  // namespace orvo::simulator
