// SPDX-License-Identifier: Apache-2.0
// EventPrinter: one line for each event, flushed at once.

#include "simulator/camerasim/inside/EventPrinter.h"

#include <poll.h>
#include <stdio.h>
#include <sys/eventfd.h>

#include <chrono>

namespace orvo::simulator {

namespace {

constexpr char kDim[] = "\033[2m";
constexpr char kGreen[] = "\033[32m";
constexpr char kRed[] = "\033[31m";
constexpr char kYellow[] = "\033[33m";
constexpr char kBlue[] = "\033[34m";
constexpr char kPlain[] = "\033[0m";

bool startsWith(const std::string& text, const std::string& start) {
    return text.compare(0, start.size(), start) == 0;
}

/** Good news, bad news, what somebody asked for, and light. */
const char* colourOf(const TimelineEvent& event) {
    for (const char* bad : {"NOT_PRESENT", "ended", "disconnected", "did not"}) {
        if (startsWith(event.what, bad)) return kRed;
    }
    if (event.kind == "command") return kBlue;
    if (event.kind == "torch") return kYellow;
    return kGreen;
}

}  // namespace

std::string eventLine(const TimelineEvent& event, bool colour) {
    char seconds[32];
    snprintf(seconds, sizeof(seconds), "%9.3f", event.seconds);
    char rest[64];
    snprintf(rest, sizeof(rest), "  %-8s  ", event.kind.c_str());
    const std::string time = event.time + " " + seconds;
    if (!colour) return time + rest + event.who + "  " + event.what;
    return kDim + time + kPlain + rest + event.who + "  " + colourOf(event) + event.what + kPlain;
}

EventPrinter::EventPrinter(Timeline& timeline, bool colour)
    : mTimeline(timeline), mColour(colour), mFinishFd(eventfd(0, EFD_CLOEXEC)) {
    std::thread([this] { printUntilFinished(); }).detach();
}

void EventPrinter::finish() {
    (void)eventfd_write(mFinishFd.get(), 1);
    MutexLock lock(mLock);
    mChanged.wait_for(lock, std::chrono::seconds(1), [this]() REQUIRES(mLock) { return mDone; });
}

void EventPrinter::printUntilFinished() {
    const Timeline::Bell bell(mTimeline);
    int64_t next = 1;
    for (bool finished = false; !finished;) {
        pollfd ready[] = {{bell.fd(), POLLIN, 0}, {mFinishFd.get(), POLLIN, 0}};
        (void)poll(ready, 2, -1);
        finished = ready[1].revents != 0;
        bell.silence();
        for (const TimelineEvent& event : mTimeline.events(next)) {
            puts(eventLine(event, mColour).c_str());
            next = event.number + 1;
        }
        fflush(stdout);
    }
    MutexLock lock(mLock);
    mDone = true;
    mChanged.notify_all();
}

}  // namespace orvo::simulator
