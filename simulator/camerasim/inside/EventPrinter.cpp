// SPDX-License-Identifier: Apache-2.0
// EventPrinter: a write that nobody reads is interrupted by a signal, so that it can be joined.

#include "simulator/camerasim/inside/EventPrinter.h"

#include <poll.h>
#include <signal.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <utility>

#include "simulator/camerasim/Looks.h"

namespace orvo::simulator {

namespace {

constexpr int kInterruption = SIGUSR1;
constexpr std::chrono::seconds kPatience{1};
constexpr std::chrono::milliseconds kPause{10};

/** A signal that only ends the system call that it comes into. */
void makeInterruptible() {
    struct sigaction action {};
    action.sa_handler = [](int) {};
    sigaction(kInterruption, &action, nullptr);
}

}  // namespace

EventPrinter::EventPrinter(Timeline& timeline, std::string greeting, bool colour)
    : mTimeline(timeline),
      mGreeting(std::move(greeting)),
      mColour(colour),
      mFinishFd(eventfd(0, EFD_CLOEXEC)) {
    makeInterruptible();
    mThread = std::thread([this] { print(); });
}

EventPrinter::~EventPrinter() {
    (void)eventfd_write(mFinishFd.get(), 1);
    const auto deadline = std::chrono::steady_clock::now() + kPatience;
    while (!mDone) {
        std::this_thread::sleep_for(kPause);
        if (std::chrono::steady_clock::now() < deadline) continue;
        // Again and again: one that comes just before the system call has no effect.
        mGivenUp = true;
        pthread_kill(mThread.native_handle(), kInterruption);
    }
    mThread.join();
}

bool EventPrinter::write(const std::string& text) {
    size_t written = 0;
    while (written < text.size() && !mGivenUp) {
        const ssize_t count = ::write(STDOUT_FILENO, text.data() + written, text.size() - written);
        if (count < 0 && errno == EAGAIN) {
            // Somebody else has made it non-blocking; a signal ends this as well.
            pollfd writable{STDOUT_FILENO, POLLOUT, 0};
            (void)poll(&writable, 1, -1);
        } else if (count < 0 && errno != EINTR) {
            return false;
        }
        if (count > 0) written += count;
    }
    return !mGivenUp;
}

void EventPrinter::print() {
    const Timeline::Bell bell(mTimeline);
    bool read = write(mGreeting);
    int64_t next = 1;
    for (bool finished = false; read && !finished;) {
        pollfd ready[] = {{bell.fd(), POLLIN, 0}, {mFinishFd.get(), POLLIN, 0}};
        (void)poll(ready, 2, -1);
        finished = ready[1].revents != 0;
        bell.silence();
        std::string lines;
        for (const TimelineEvent& event : mTimeline.events(next)) {
            lines += eventLine(event, mColour) + "\n";
            next = event.number + 1;
        }
        read = write(lines);
    }
    mDone = true;
}

}  // namespace orvo::simulator
