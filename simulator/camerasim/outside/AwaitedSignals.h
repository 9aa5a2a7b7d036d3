// SPDX-License-Identifier: Apache-2.0
// AwaitedSignals: what the outer half of a running device waits for.

#pragma once

#include <android-base/result.h>
#include <android-base/unique_fd.h>

namespace orvo::simulator {

/**
 * SIGCHLD, SIGINT, SIGTERM and SIGHUP, taken one after the other instead of interrupting.
 *
 * A terminal that hangs up sends SIGHUP to nobody but the leader of its session. Where that is a
 * make or a shell which waits for this process first, nobody would ever be told. So the terminal is
 * watched, too: the one that this process belongs to, and the one that it prints to.
 */
class AwaitedSignals {
  public:
    /** Blocks them from now on, in this process and in those that it starts. */
    static android::base::Result<AwaitedSignals> block();

    /** Waits for the next one; a terminal that has hung up counts as SIGHUP. */
    int next();

  private:
    AwaitedSignals() = default;
    void watchTerminal(int terminal);

    android::base::unique_fd mTerminal;  ///< of its own, for all three streams may be redirected
    android::base::unique_fd mSignals;
    android::base::unique_fd mEvents;  ///< tells when there is a signal, or a hang-up
};

}  // namespace orvo::simulator
