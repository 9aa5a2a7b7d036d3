// SPDX-License-Identifier: Apache-2.0
// Supervisor: one waiting thread for each child.

#include "simulator/camerasim/inside/Supervisor.h"

#include <fcntl.h>
#include <signal.h>
#include <string.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <utility>

#include <android-base/file.h>
#include <android-base/unique_fd.h>

#include "simulator/process/CommandLine.h"

namespace orvo::simulator {

using android::base::ErrnoError;
using android::base::Error;
using android::base::Result;
using android::base::unique_fd;

namespace {

/** The child's side of a fork; only what is allowed between fork and exec. Never returns. */
[[noreturn]] void becomeProgram(const CommandLine& line, pid_t parent, int stdoutFd, int logFd) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent) _exit(127);  // the parent ended before that took effect
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    // In a session of its own: a terminal's signals are for the supervisor.
    setsid();
    dup2(stdoutFd, STDOUT_FILENO);
    dup2(logFd, STDERR_FILENO);
    line.execute();
    _exit(127);
}

/** As the kernel tells it in the word after the program's name. */
bool isStopped(pid_t pid) {
    std::string line;
    android::base::ReadFileToString("/proc/" + std::to_string(pid) + "/stat", &line);
    const size_t nameEnd = line.rfind(") ");
    return nameEnd != std::string::npos && line[nameEnd + 2] == 'T';
}

std::string describeEnd(int status) {
    if (WIFSIGNALED(status)) {
        return std::string("ended by signal ") + std::to_string(WTERMSIG(status)) + " (" +
               strsignal(WTERMSIG(status)) + ")";
    }
    return "ended with status " + std::to_string(WEXITSTATUS(status));
}

}  // namespace

Supervisor::~Supervisor() {
    stopAll();
    MutexLock lock(mLock);
    for (auto& [name, child] : mChildren) {
        std::thread waiter = std::move(child.waiter);
        lock.unlock();
        waiter.join();
        lock.lock();
    }
}

Result<pid_t> Supervisor::start(const ProgramStart& program) {
    const CommandLine line(program.command);
    if (access(program.command[0].c_str(), X_OK) != 0) {
        return ErrnoError() << "cannot run '" << program.command[0] << "'";
    }
    unique_fd log(open(program.logFile.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644));
    if (!log.ok()) return ErrnoError() << "cannot write '" << program.logFile << "'";

    MutexLock lock(mLock);
    if (mStopping) return Error() << "the device is being stopped";
    const Child* namesake = find(program.name);
    if (namesake != nullptr && namesake->running) return Error() << program.name << " runs already";
    const pid_t parent = getpid();
    const pid_t pid = fork();
    if (pid < 0) return ErrnoError() << "cannot start another process";
    if (pid == 0) {
        const int out = program.stdoutFd >= 0 ? program.stdoutFd : log.get();
        becomeProgram(line, parent, out, log.get());
    }
    mChildren.emplace_back();
    mChildren.back().first = program.name;
    Child& child = mChildren.back().second;
    child.pid = pid;
    child.waiter = std::thread(
            [this, name = program.name, started = &child] { waitForEnd(name, started); });
    return pid;
}

void Supervisor::waitForEnd(const std::string& name, Child* child) {
    // Not reaped yet, so that the id is still this child's while others may signal it.
    siginfo_t info;
    TEMP_FAILURE_RETRY(waitid(P_PID, child->pid, &info, WEXITED | WNOWAIT));
    {
        MutexLock lock(mLock);
        int status = 0;
        TEMP_FAILURE_RETRY(waitpid(child->pid, &status, 0));
        child->running = false;
        child->end = describeEnd(status);
    }
    if (mObserver) mObserver(name, child->pid, child->end);
    {
        MutexLock lock(mLock);
        child->observed = true;
    }
    mChanged.notify_all();
}

const Supervisor::Child* Supervisor::find(const std::string& wanted) const {
    const Child* newest = nullptr;
    for (const auto& [name, child] : mChildren) {
        if (name == wanted) newest = &child;
    }
    return newest;
}

bool Supervisor::isRunning(const std::string& name) const {
    return pidOf(name).has_value();
}

std::optional<pid_t> Supervisor::pidOf(const std::string& name) const {
    MutexLock lock(mLock);
    const Child* child = find(name);
    if (child == nullptr || !child->running) return std::nullopt;
    return child->pid;
}

std::string Supervisor::endOf(const std::string& name) const {
    MutexLock lock(mLock);
    const Child* child = find(name);
    return child == nullptr ? "" : child->end;
}

Supervisor::History Supervisor::historyOf(const std::string& wanted) const {
    MutexLock lock(mLock);
    History history;
    for (const auto& [name, child] : mChildren) {
        if (name != wanted || child.running) continue;
        history.ends++;
        history.lastEnd = child.end;
    }
    return history;
}

bool Supervisor::isHung(const std::string& name) const {
    MutexLock lock(mLock);
    const Child* child = find(name);
    return child != nullptr && child->running && isStopped(child->pid);
}

bool Supervisor::awaitEnd(const std::string& name, std::chrono::milliseconds patience) {
    MutexLock lock(mLock);
    const Child* child = find(name);
    if (child == nullptr) return true;
    return mChanged.wait_for(lock, patience, [&]() REQUIRES(mLock) { return child->observed; });
}

bool Supervisor::awaitMoreEnds(const std::string& wanted, int ends,
                               std::chrono::milliseconds patience) {
    MutexLock lock(mLock);
    return mChanged.wait_for(lock, patience, [&]() REQUIRES(mLock) {
        int observed = 0;
        for (const auto& [name, child] : mChildren) {
            if (name == wanted && child.observed) observed++;
        }
        return observed > ends;
    });
}

bool Supervisor::signal(const std::string& name, int signal) {
    MutexLock lock(mLock);
    const Child* child = find(name);
    return child != nullptr && child->running && kill(child->pid, signal) == 0;
}

void Supervisor::stopAll(std::chrono::milliseconds patience) {
    MutexLock lock(mLock);
    mStopping = true;
    for (auto it = mChildren.rbegin(); it != mChildren.rend(); ++it) {
        const Child& child = it->second;
        const auto observed = [&]() REQUIRES(mLock) { return child.observed; };
        if (child.running) {
            kill(child.pid, SIGTERM);
            kill(child.pid, SIGCONT);  // a stopped process hears SIGTERM only when it goes on
            mChanged.wait_for(lock, patience, observed);
        }
        if (child.running) kill(child.pid, SIGKILL);
        // Also of one that ended by itself a moment ago: what the observer uses may go after this.
        mChanged.wait(lock, observed);
    }
}

}  // namespace orvo::simulator
