// SPDX-License-Identifier: Apache-2.0
// AwaitedSignals: a signalfd, and terminals beside it.

#include "simulator/camerasim/outside/AwaitedSignals.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/epoll.h>
#include <sys/signalfd.h>
#include <unistd.h>

namespace orvo::simulator {

using android::base::ErrnoError;
using android::base::Result;

Result<AwaitedSignals> AwaitedSignals::block() {
    sigset_t signals;
    sigemptyset(&signals);
    for (const int signal : {SIGCHLD, SIGINT, SIGTERM, SIGHUP}) sigaddset(&signals, signal);
    sigprocmask(SIG_BLOCK, &signals, nullptr);

    AwaitedSignals awaited;
    awaited.mSignals.reset(signalfd(-1, &signals, SFD_CLOEXEC));
    awaited.mEvents.reset(epoll_create1(EPOLL_CLOEXEC));
    epoll_event event{};
    event.events = EPOLLIN;
    event.data.fd = awaited.mSignals.get();
    if (epoll_ctl(awaited.mEvents.get(), EPOLL_CTL_ADD, awaited.mSignals.get(), &event) != 0) {
        return ErrnoError() << "cannot wait for signals";
    }
    awaited.mTerminal.reset(open("/dev/tty", O_RDONLY | O_NONBLOCK | O_CLOEXEC));
    awaited.watchTerminal(awaited.mTerminal.get());
    // One that hung up before it could be opened is no longer this process's own.
    awaited.watchTerminal(STDOUT_FILENO);
    return awaited;
}

void AwaitedSignals::watchTerminal(int terminal) {
    epoll_event event{};
    // What somebody types stays unread and must be told only once; without asking for it, a
    // terminal that is no pseudo terminal would not tell of its hanging up.
    event.events = EPOLLIN | EPOLLET;
    event.data.fd = terminal;
    // There need not be one; and a file, which cannot be watched, cannot hang up either.
    (void)epoll_ctl(mEvents.get(), EPOLL_CTL_ADD, terminal, &event);
}

int AwaitedSignals::next() {
    for (;;) {
        epoll_event event{};
        if (epoll_wait(mEvents.get(), &event, 1, -1) != 1) continue;
        if (event.data.fd != mSignals.get()) {
            if ((event.events & EPOLLHUP) != 0) return SIGHUP;
            continue;
        }
        signalfd_siginfo info{};
        if (read(mSignals.get(), &info, sizeof(info)) == sizeof(info)) {
            return static_cast<int>(info.ssi_signo);
        }
    }
}

}  // namespace orvo::simulator
