// SPDX-License-Identifier: Apache-2.0
// Session: the outer half of a running device, which hears the terminal and cleans up.

#include "simulator/camerasim/outside/Session.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

#include <android-base/file.h>
#include <android-base/unique_fd.h>

#include "simulator/process/CommandLine.h"

namespace orvo::simulator {

using android::base::ErrnoError;
using android::base::Result;
using android::base::unexpected;
using android::base::unique_fd;

namespace {

/** Starts the inner half; it holds the lifeline, and `stop` tells it to stop by ending. */
Result<pid_t> startInside(const Sandbox& sandbox, const std::vector<std::string>& command,
                          int lifeline, int stop) {
    const CommandLine line(sandbox.commandLine(command));
    const pid_t parent = getpid();
    const pid_t pid = fork();
    if (pid < 0) return ErrnoError() << "cannot start another process";
    if (pid > 0) return pid;
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent) _exit(127);
    // A terminal's signals are for the outer half, which passes them on in order.
    setsid();
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    fcntl(lifeline, F_SETFD, 0);
    fcntl(stop, F_SETFD, 0);
    line.execute();
    _exit(127);
}

/** Waits for the inner half; a signal asks it to stop, a second one ends it at once. */
int awaitEnd(pid_t child, unique_fd stop, AwaitedSignals& signals) {
    int interrupted = 0;
    int requests = 0;
    for (;;) {
        const int signal = signals.next();
        if (signal != SIGCHLD) {
            // Of one hang-up the terminal, the shell and whoever else runs this may all tell.
            if (signal != SIGHUP && ++requests > 1) kill(child, SIGKILL);
            interrupted = signal;
            stop.reset();
            continue;
        }
        int status = 0;
        if (waitpid(child, &status, WNOHANG) != child) continue;
        if (interrupted != 0) return 128 + interrupted;
        return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    }
}

}  // namespace

Session::Session(AwaitedSignals signals, Janitor janitor, Stage stage, Sandbox sandbox)
    : mSignals(std::move(signals)),
      mJanitor(std::move(janitor)),
      mStage(std::move(stage)),
      mSandbox(std::move(sandbox)) {}

Result<Session> Session::prepare(const HeadsetDescription& device, const Installation& installation,
                                 bool keep) {
    // From here on a signal waits until run() hears it, so that nothing is left half done.
    auto signals = AwaitedSignals::block();
    if (!signals) return unexpected(signals.error());
    auto janitor = Janitor::start(keep);
    if (!janitor) return unexpected(janitor.error());
    Stage stage(janitor->directory());
    const auto filled = stage.fill(device, installation);
    if (!filled) return unexpected(filled.error());
    auto sandbox = Sandbox::prepare(stage);
    if (!sandbox) return unexpected(sandbox.error());
    return Session(std::move(*signals), std::move(*janitor), std::move(stage), std::move(*sandbox));
}

Result<int> Session::run(const CommandMaker& command) {
    unique_fd stopRead, stopWrite;
    if (!android::base::Pipe(&stopRead, &stopWrite)) return ErrnoError() << "cannot make a pipe";
    const auto child =
            startInside(mSandbox, command(stopRead.get()), mJanitor.lifeline(), stopRead.get());
    if (!child) return unexpected(child.error());
    stopRead.reset();
    const int status = awaitEnd(*child, std::move(stopWrite), mSignals);
    mJanitor.finish();
    return status;
}

}  // namespace orvo::simulator
