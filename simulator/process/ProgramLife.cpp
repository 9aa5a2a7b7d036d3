// SPDX-License-Identifier: Apache-2.0
// ProgramLife: the C library reads options; one thread waits for the signals that all others have
// blocked, and gets one itself when it is no longer needed.

#include "simulator/process/ProgramLife.h"

#include <getopt.h>
#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

#include <utility>

namespace orvo::simulator {

namespace {

constexpr int kBadUse = 2;

[[noreturn]] void help(const Usage& usage) {
    printf("%s\nUsage: %s [-h] %s%s\n\n  %s    %s\n  -h,--help   print this help and exit\n",
           usage.sentence, usage.program, usage.word, usage.most > 1 ? "..." : "", usage.word,
           usage.meaning);
    exit(0);
}

}  // namespace

std::vector<std::string> wordsOrLeave(int argc, char** argv, const Usage& usage) {
    static const option kOptions[] = {{"help", no_argument, nullptr, 'h'}, {}};
    for (int found; (found = getopt_long(argc, argv, "h", kOptions, nullptr)) != -1;) {
        if (found == 'h') help(usage);
        exit(kBadUse);  // getopt_long has said why
    }
    const int count = argc - optind;
    if (count < 1 || count > usage.most) {
        fprintf(stderr, "%s: %s %s; see --help\n", usage.program, usage.word,
                count < 1 ? "is required" : "is followed by a word too many");
        exit(kBadUse);
    }
    return {argv + optind, argv + argc};
}

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

EndingSignals::EndingSignals(std::function<void()> end) {
    blockEndingSignals();
    mThread = std::thread([this, end = std::move(end)] {
        const sigset_t signals = endingSignals();
        int signal = 0;
        sigwait(&signals, &signal);
        if (mIsOver) return;
        mCame = true;
        end();
    });
}

EndingSignals::~EndingSignals() {
    mIsOver = true;
    pthread_kill(mThread.native_handle(), SIGINT);
    mThread.join();
}

void announceReady() {
    puts("ready");
    fflush(stdout);
    dup2(STDERR_FILENO, STDOUT_FILENO);
}

}  // namespace orvo::simulator
