// SPDX-License-Identifier: Apache-2.0
// StopWatch: nothing is ever written to the descriptor; being readable is its end.

#include "simulator/camerasim/inside/StopWatch.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

namespace orvo::simulator {

using android::base::unique_fd;

StopWatch::StopWatch(unique_fd stop, std::function<void()> function)
    : mStop(std::move(stop)), mFinish(eventfd(0, EFD_CLOEXEC)) {
    mThread = std::thread([this, function = std::move(function)] {
        pollfd awaited[] = {{mStop.get(), POLLIN, 0}, {mFinish.get(), POLLIN, 0}};
        TEMP_FAILURE_RETRY(poll(awaited, 2, -1));
        if (awaited[0].revents != 0) function();
    });
}

StopWatch::~StopWatch() {
    (void)eventfd_write(mFinish.get(), 1);
    mThread.join();
}

}  // namespace orvo::simulator
