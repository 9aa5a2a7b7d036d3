// SPDX-License-Identifier: Apache-2.0
// Session: the outer half of a running headset, which hears the terminal and cleans up.

#include "simulator/camerasim/outside/Session.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <iostream>
#include <utility>
#include <vector>

#include <android-base/file.h>

#include "simulator/control/Complaint.h"
#include "simulator/control/ControlServer.h"
#include "simulator/description/HeadsetFiles.h"
#include "simulator/process/CommandLine.h"

namespace orvo::simulator {

using android::base::ErrnoError;
using android::base::Result;
using android::base::unexpected;
using android::base::unique_fd;

namespace {

std::vector<std::string> commandFor(const std::string& program, const InsideOptions& options) {
    std::vector<std::string> words = {program, "inside"};
    if (options.restart) words.push_back("--restart");
    if (options.quiet) words.push_back("--quiet");
    for (const std::string& word : {options.root, std::to_string(options.stopFd),
                                    std::to_string(options.socketFd), options.directory}) {
        words.push_back(word);
    }
    return words;
}

}  // namespace

Session::Session(AwaitedSignals signals, Janitor janitor, bool keep)
    : mSignals(std::move(signals)),
      mJanitor(std::move(janitor)),
      mStage(mJanitor.directory()),
      mKeep(keep) {}

Result<Session> Session::start(const SessionOptions& options) {
    const auto description = HeadsetDescription::read(options.directory);
    if (!description) return unexpected(description.error());
    // The inner half reads them again; here everything that is wrong is found before anything runs.
    const auto files = HeadsetFiles::read(*description);
    if (!files) return unexpected(files.error());
    for (const std::string& warning : files->warnings()) {
        std::cerr << "camerasim: warning: " << warning << std::endl;
    }
    const auto installation = Installation::ofThisProgram();
    if (!installation) return unexpected(installation.error());

    // From here on a signal waits until awaitEnd() hears it, so that nothing is left half done.
    auto signals = AwaitedSignals::block();
    if (!signals) return unexpected(signals.error());
    auto janitor = Janitor::start(options.keep);
    if (!janitor) return unexpected(janitor.error());
    Session session(std::move(*signals), std::move(*janitor), options.keep);
    const auto filled = session.stage().fill(*description, *installation);
    if (!filled) return unexpected(filled.error());
    auto sandbox = Sandbox::prepare(session.stage());
    if (!sandbox) return unexpected(sandbox.error());
    const auto socket = ControlServer::listen(session.stage().root());
    if (!socket) return unexpected(socket.error());
    unique_fd stop;
    if (!android::base::Pipe(&stop, &session.mStop)) return ErrnoError() << "cannot make a pipe";
    const InsideOptions inside{description->directory, session.stage().root(), stop.get(),
                               socket->get(),          options.restart,        options.quiet};
    const auto started = session.startInside(
            sandbox->commandLine(options.command.empty()
                                         ? commandFor(installation->camerasim, inside)
                                         : options.command),
            stop.get(), socket->get());
    if (!started) return unexpected(started.error());
    return session;
}

Result<void> Session::startInside(const std::vector<std::string>& command, int stop, int socket) {
    const CommandLine line(command);
    const pid_t parent = getpid();
    mInside = fork();
    if (mInside < 0) return ErrnoError() << "cannot start another process";
    if (mInside > 0) return {};
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent) _exit(127);
    // A terminal's signals are for the outer half, which passes them on in order.
    setsid();
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    for (const int inherited : {mJanitor.lifeline(), stop, socket}) {
        fcntl(inherited, F_SETFD, 0);
    }
    line.execute();
    _exit(127);
}

int Session::awaitEnd() {
    int interrupted = 0;
    int requests = 0;
    for (;;) {
        const int signal = mSignals.next();
        if (signal != SIGCHLD) {
            // Of one hang-up the terminal, the shell and whoever else runs this may all tell.
            if (signal != SIGHUP && ++requests > 1) kill(mInside, SIGKILL);
            interrupted = signal;
            mStop.reset();
            continue;
        }
        int status = 0;
        if (waitpid(mInside, &status, WNOHANG) != mInside) continue;
        const bool crashed = WIFSIGNALED(status) && requests < 2;  // the second one kills it
        if (interrupted != 0 && !crashed) return 128 + interrupted;
        return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    }
}

void Session::finish() {
    mJanitor.finish();
    if (mKeep) std::cout << "Kept: " << mStage.root() << std::endl;
}

bool wasToldToStop(int status) {
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        if (status == 128 + signal) return true;
    }
    return status == kAsExpected;
}

}  // namespace orvo::simulator
