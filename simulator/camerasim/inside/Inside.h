// SPDX-License-Identifier: Apache-2.0
// runInside: the half of a session that runs in the headset's namespace.

#pragma once

#include <string>

namespace orvo::simulator {

/** What the outer half tells the inner one, on its command line. */
struct InsideOptions {
    std::string directory;  ///< of the description
    std::string root;       ///< of the stage
    int stopFd = -1;        ///< comes to its end when the headset is to stop
    int socketFd = -1;      ///< where other terminals ask
    bool restart = false;   ///< start provider processes again when they end
    bool quiet = false;     ///< print no timeline
};

/**
 * Boots the headset, serves the requests of other terminals, and prints the timeline.
 *
 * @return an exit status: 0 if it was told to stop.
 */
int runInside(const InsideOptions& options);

}  // namespace orvo::simulator
