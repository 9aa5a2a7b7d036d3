// SPDX-License-Identifier: Apache-2.0
// Session: stages a device and runs one command in its namespace, from outside.

#pragma once

#include <functional>
#include <string>
#include <vector>

#include <android-base/result.h>

#include "simulator/camerasim/outside/AwaitedSignals.h"
#include "simulator/camerasim/outside/Installation.h"
#include "simulator/camerasim/outside/Janitor.h"
#include "simulator/camerasim/outside/Sandbox.h"
#include "simulator/camerasim/outside/Stage.h"
#include "simulator/description/HeadsetDescription.h"

namespace orvo::simulator {

/**
 * What of a running device stays outside its namespace.
 *
 * The command inside, and all that it starts, end when this process does, however it does; the
 * temporary directory goes with the last of them. The process must have one thread.
 */
class Session {
  public:
    /** The command to run inside, given the number of a descriptor that it inherits. */
    using CommandMaker = std::function<std::vector<std::string>(int stopFd)>;

    /**
     * Makes and fills the temporary directory and tries the namespace out. Blocks SIGINT, SIGTERM,
     * SIGHUP and SIGCHLD.
     *
     * @param keep leave the temporary directory there in the end.
     * @return an error, one line, says what to do.
     */
    static android::base::Result<Session> prepare(const HeadsetDescription& device,
                                                  const Installation& installation, bool keep);

    const Stage& stage() const { return mStage; }

    /**
     * Runs the command until it ends; once. SIGINT, SIGTERM or SIGHUP ask it to end, by the end of
     * what it can read from the descriptor; so does the terminal, by hanging up. A second SIGINT or
     * SIGTERM kills it.
     *
     * @return its exit status, or 128 and the number of the signal that ended it or this.
     */
    android::base::Result<int> run(const CommandMaker& command);

  private:
    Session(AwaitedSignals signals, Janitor janitor, Stage stage, Sandbox sandbox);

    AwaitedSignals mSignals;
    Janitor mJanitor;
    Stage mStage;
    Sandbox mSandbox;
};

}  // namespace orvo::simulator
