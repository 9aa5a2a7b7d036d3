// SPDX-License-Identifier: Apache-2.0
// ProgramLife: one thread waits for the signals that all others have blocked.

#include "simulator/process/ProgramLife.h"

#include <stdio.h>
#include <unistd.h>

#include <thread>

namespace orvo::simulator {

sigset_t endingSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    return signals;
}

void blockEndingSignals() {
    const sigset_t signals = endingSignals();
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
}

void endQuietlyOnSignals() {
    blockEndingSignals();
    std::thread([] {
        const sigset_t signals = endingSignals();
        int signal = 0;
        sigwait(&signals, &signal);
        fflush(stdout);
        _exit(0);
    }).detach();
}

void announceReady() {
    puts("ready");
    fflush(stdout);
    dup2(STDERR_FILENO, STDOUT_FILENO);
}

}  // namespace orvo::simulator
