// SPDX-License-Identifier: Apache-2.0
// Stage: a device's temporary directory, filled with what its processes need.

#pragma once

#include <string>

#include <android-base/result.h>

#include "simulator/camerasim/outside/Installation.h"
#include "simulator/description/HeadsetDescription.h"

namespace orvo::simulator {

/**
 * The directories of one running device:
 *
 *     <root>/vendor   becomes /vendor: the device directory's tree and the libraries of the build
 *     <root>/run      ORVO_DEVICE_DIR: sockets, properties, log/<program>.log; and the socket
 *                     `control`, by which other terminals reach the device
 */
class Stage {
  public:
    explicit Stage(std::string root) : mRoot(std::move(root)) {}

    const std::string& root() const { return mRoot; }
    std::string vendor() const { return mRoot + "/vendor"; }
    std::string run() const { return mRoot + "/run"; }
    std::string logs() const { return run() + "/log"; }
    std::string control() const { return run() + "/control"; }
    std::string logOf(const std::string& program) const { return logs() + "/" + program + ".log"; }

    /** Fills the empty root. An error, one line, says which file is in the way. */
    android::base::Result<void> fill(const HeadsetDescription& device,
                                     const Installation& installation) const;

  private:
    std::string mRoot;
};

}  // namespace orvo::simulator
