// SPDX-License-Identifier: Apache-2.0
// TourCommand: `camerasim tour`, outside the device's namespace and inside it.

#pragma once

#include <string>

#include "simulator/camerasim/ExitStatus.h"

namespace orvo::simulator {

struct TourOptions {
    std::string deviceDirectory;
    bool keep = false;     ///< leave the temporary directory there
    int pauseSeconds = 0;  ///< after each step, for who wants to read or look around
};

/**
 * Checks the device's files, stages them, and runs the tour inside a namespace. Returns when every
 * process of the device and its temporary directory are gone; the caller must have one thread.
 *
 * @return an exit status; 128 and the signal's number if a signal ended the tour.
 */
int runTour(const TourOptions& options);

/**
 * The part that runs inside: boots the device and walks through it.
 *
 * @param stage the root of the stage.
 * @param stopFd comes to its end when the tour is to stop.
 */
int runTourInside(const TourOptions& options, const std::string& stage, int stopFd);

}  // namespace orvo::simulator
