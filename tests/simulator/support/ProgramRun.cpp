// SPDX-License-Identifier: Apache-2.0
// ProgramRun: fork, exec, two pipes or a terminal, and poll.

#include "tests/simulator/support/ProgramRun.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/ioctl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <system_error>
#include <utility>

#include <android-base/file.h>

#include "simulator/process/CommandLine.h"

extern char** environ;

namespace orvo::simulator::testing {

using android::base::unique_fd;

namespace {

bool openTerminal(unique_fd* ours, unique_fd* theirs) {
    ours->reset(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC));
    if (grantpt(ours->get()) != 0 || unlockpt(ours->get()) != 0) return false;
    theirs->reset(open(ptsname(ours->get()), O_RDWR | O_NOCTTY | O_CLOEXEC));
    return theirs->ok();
}

/** In a child: the leader of a session of its own, at that terminal. */
void takeTerminal(int terminal, int inherited) {
    setsid();
    ioctl(terminal, TIOCSCTTY, 0);
    dup2(terminal, STDIN_FILENO);
    dup2(terminal, STDERR_FILENO);
    // Stays open without being used, so that its other end tells when everybody has ended.
    fcntl(inherited, F_SETFD, 0);
}

}  // namespace

ProgramRun::ProgramRun(std::vector<std::string> command,
                       std::map<std::string, std::string> environment, Screen screen) {
    const bool isTerminal = screen == Screen::TERMINAL;
    unique_fd outWrite, errWrite;
    if (!(isTerminal ? openTerminal(&mOutEnd, &outWrite)
                     : android::base::Pipe(&mOutEnd, &outWrite)) ||
        !android::base::Pipe(&mErrEnd, &errWrite)) {
        abort();
    }
    const CommandLine line(std::move(command));
    mPid = fork();
    if (mPid != 0) return;
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    for (const auto& [name, value] : environment) setenv(name.c_str(), value.c_str(), 1);
    dup2(outWrite.get(), STDOUT_FILENO);
    if (isTerminal) {
        takeTerminal(outWrite.get(), errWrite.get());
    } else {
        dup2(errWrite.get(), STDERR_FILENO);
    }
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    line.execute();
    _exit(127);
}

ProgramRun::~ProgramRun() {
    if (mReaped) return;
    kill(mPid, SIGKILL);
    waitpid(mPid, nullptr, 0);
}

void ProgramRun::signal(int signal) const {
    kill(mPid, signal);
}

void ProgramRun::type(const std::string& text) const {
    if (!android::base::WriteStringToFd(text, mOutEnd)) abort();
}

bool ProgramRun::readSome(std::chrono::steady_clock::time_point deadline) {
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
            deadline - std::chrono::steady_clock::now());
    pollfd ends[] = {{mOutEnd.get(), POLLIN, 0}, {mErrEnd.get(), POLLIN, 0}};
    if ((!mOutEnd.ok() && !mErrEnd.ok()) || left.count() <= 0) return false;
    if (poll(ends, 2, static_cast<int>(left.count())) <= 0) return false;
    for (const bool isOut : {true, false}) {
        unique_fd& end = isOut ? mOutEnd : mErrEnd;
        if (!end.ok() || ends[isOut ? 0 : 1].revents == 0) continue;
        char bytes[4096];
        const ssize_t count = TEMP_FAILURE_RETRY(read(end.get(), bytes, sizeof(bytes)));
        if (count <= 0) {
            end.reset();
        } else {
            (isOut ? mOut : mErr).append(bytes, count);
        }
    }
    return true;
}

bool ProgramRun::awaitOutput(const std::string& text, std::chrono::milliseconds patience) {
    const auto deadline = std::chrono::steady_clock::now() + patience;
    while (mOut.find(text) == std::string::npos) {
        if (!readSome(deadline)) return false;
    }
    return true;
}

ProgramEnd ProgramRun::awaitEnd(std::chrono::milliseconds patience) {
    const auto deadline = std::chrono::steady_clock::now() + patience;
    while (readSome(deadline)) {
    }
    const bool inTime = !mOutEnd.ok() && !mErrEnd.ok();
    if (!inTime) kill(mPid, SIGKILL);
    int status = 0;
    waitpid(mPid, &status, 0);
    mReaped = true;
    return {inTime, WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status), mOut, mErr};
}

ProgramEnd runProgram(std::vector<std::string> command,
                      std::map<std::string, std::string> environment) {
    return ProgramRun(std::move(command), std::move(environment)).awaitEnd();
}

std::vector<pid_t> processesWithEnvironment(const std::string& text) {
    std::vector<pid_t> found;
    std::error_code ignored;  // processes come and go while they are listed
    for (const auto& entry : std::filesystem::directory_iterator("/proc", ignored)) {
        const std::string name = entry.path().filename();
        if (name.find_first_not_of("0123456789") != std::string::npos) continue;
        std::ostringstream content;
        content << std::ifstream(entry.path() / "environ").rdbuf();
        if (content.str().find(text) != std::string::npos) found.push_back(std::stoi(name));
    }
    return found;
}

std::string programPath(const std::string& name) {
    return std::filesystem::read_symlink("/proc/self/exe").parent_path() / name;
}

}  // namespace orvo::simulator::testing
