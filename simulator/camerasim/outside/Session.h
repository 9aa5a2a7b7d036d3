// SPDX-License-Identifier: Apache-2.0
// Session: a headset from its boot to its end, seen from outside its namespace.

#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

#include <android-base/result.h>
#include <android-base/unique_fd.h>

#include "simulator/camerasim/inside/Inside.h"
#include "simulator/camerasim/outside/AwaitedSignals.h"
#include "simulator/camerasim/outside/Installation.h"
#include "simulator/camerasim/outside/Janitor.h"
#include "simulator/camerasim/outside/Sandbox.h"
#include "simulator/camerasim/outside/Stage.h"

namespace orvo::simulator {

/** How a headset is to be run. */
struct SessionOptions {
    std::string directory;  ///< of the description
    bool keep = false;      ///< leave the temporary directory there in the end
    bool restart = false;   ///< start provider processes again when they end
    bool quiet = false;     ///< print no timeline
    /** What runs inside, in place of this program's own inner half; for tests. */
    std::vector<std::string> command = {};
};

/**
 * The headset runs in another process. That, and all that it starts, ends when this process does,
 * however it does; the temporary directory goes with the last of them.
 */
class Session {
  public:
    /**
     * Checks the headset's files, fills the temporary directory, tries the namespace out and has
     * the headset booted. From now on it can be asked: an answer comes when it has booted, or has
     * ended. Blocks SIGINT, SIGTERM, SIGHUP and SIGCHLD; the process must have one thread.
     *
     * @return an error, one line, says what to do.
     */
    static android::base::Result<Session> start(const SessionOptions& options);

    const Stage& stage() const { return mStage; }

    /**
     * Waits until the headset has ended. SIGINT, SIGTERM or SIGHUP ask it to end; so does the
     * terminal, by hanging up. A second SIGINT or SIGTERM kills it.
     *
     * @return its exit status, or 128 and the number of the signal that ended it or this.
     */
    int awaitEnd();
    /** Lets go of the temporary directory, and waits until it is gone; or says that it was kept. */
    void finish();

  private:
    Session(AwaitedSignals signals, Janitor janitor, bool keep);
    android::base::Result<void> startInside(const std::vector<std::string>& command, int stop,
                                            int socket);

    AwaitedSignals mSignals;
    Janitor mJanitor;
    Stage mStage;  ///< in the janitor's directory
    bool mKeep;
    pid_t mInside = -1;
    android::base::unique_fd mStop;  ///< its end asks the inner half to stop
};

/** Whether a session that is to go on until it is stopped ended as it should: by such a signal. */
bool wasToldToStop(int status);

}  // namespace orvo::simulator
