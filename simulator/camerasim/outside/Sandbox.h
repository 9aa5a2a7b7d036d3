// SPDX-License-Identifier: Apache-2.0
// Sandbox: runs a program in a mount namespace where /vendor is a simulated device's own tree.

#pragma once

#include <string>
#include <vector>

#include <android-base/result.h>

#include "simulator/camerasim/outside/Stage.h"

namespace orvo::simulator {

/**
 * The machine's own root file system with another /vendor, by means of bubblewrap.
 *
 * The root directory of the namespace is a new one with every entry of the real root bound into
 * it: an ordinary user cannot add a mount point to the real root, and root must not leave one
 * there. Process ids and the network are those of the machine.
 */
class Sandbox {
  public:
    /** Finds bubblewrap in the PATH and tries it; an error, one line, if it cannot be used. */
    static android::base::Result<Sandbox> prepare(const Stage& stage);

    /** The command line that runs `command` inside; the first word is an absolute path. */
    std::vector<std::string> commandLine(const std::vector<std::string>& command) const;

  private:
    Sandbox(std::string bwrap, const Stage& stage);
    android::base::Result<void> tryOut() const;

    std::string mBwrap;
    std::vector<std::string> mPrefix;  ///< the command line before the command
};

}  // namespace orvo::simulator
