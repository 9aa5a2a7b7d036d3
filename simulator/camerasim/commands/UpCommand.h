// SPDX-License-Identifier: Apache-2.0
// UpCommand: `camerasim up`, outside the device's namespace and inside it.

#pragma once

#include <string>

namespace orvo::simulator {

struct UpOptions {
    std::string deviceDirectory;
    bool keep = false;     ///< leave the temporary directory there
    bool restart = false;  ///< start provider processes again when they end
};

/**
 * Checks the device's files, stages them, and runs the device inside a namespace until a signal or
 * a request ends it. Returns when every process of the device and its temporary directory are gone;
 * the caller must have one thread.
 *
 * The inner half is started as `camerasim inside up [--restart] STAGE STOP_FD DEVICE_DIR`.
 *
 * @return an exit status: 0 if the device was told to stop, by a request or by SIGINT, SIGTERM or
 *         SIGHUP.
 */
int runUp(const UpOptions& options);

/**
 * The part that runs inside: boots the device, serves the requests of other terminals, and prints
 * the timeline.
 *
 * @param stage the root of the stage.
 * @param stopFd comes to its end when the device is to stop.
 */
int runUpInside(const UpOptions& options, const std::string& stage, int stopFd);

}  // namespace orvo::simulator
