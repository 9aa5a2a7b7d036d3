// SPDX-License-Identifier: Apache-2.0
// LiveScreen: the usual control sequences.

#include "simulator/camerasim/commands/LiveScreen.h"

#include <signal.h>
#include <sys/ioctl.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <iostream>
#include <vector>

#include <android-base/strings.h>

namespace orvo::simulator {

namespace {

/** Other screen, no cursor, no line breaks of the terminal's own; and back. */
constexpr char kEnter[] = "\033[?1049h\033[?25l\033[?7l";
constexpr char kLeave[] = "\033[?7h\033[?25h\033[?1049l";
constexpr char kHome[] = "\033[H";
constexpr char kClearLine[] = "\033[K";
constexpr char kClearBelow[] = "\033[J";

sigset_t handledSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    for (const int signal : {SIGINT, SIGTERM, SIGWINCH}) sigaddset(&signals, signal);
    return signals;
}

size_t rows() {
    winsize size{};
    if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_row == 0) return 24;
    return size.ws_row;
}

}  // namespace

LiveScreen::LiveScreen() {
    const sigset_t signals = handledSignals();
    sigprocmask(SIG_BLOCK, &signals, nullptr);
    mSignals.reset(signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK));
    std::cout << kEnter << std::flush;
}

LiveScreen::~LiveScreen() {
    std::cout << kLeave << std::flush;
    const sigset_t signals = handledSignals();
    sigprocmask(SIG_UNBLOCK, &signals, nullptr);
}

void LiveScreen::show(const std::string& text) {
    std::vector<std::string> lines = android::base::Split(text, "\n");
    if (lines.size() > rows()) lines.resize(rows());
    std::cout << kHome << android::base::Join(lines, std::string(kClearLine) + "\n") << kClearBelow
              << std::flush;
}

bool LiveScreen::isAskedToEnd() const {
    signalfd_siginfo info{};
    if (read(mSignals.get(), &info, sizeof(info)) != sizeof(info)) return false;
    return info.ssi_signo != SIGWINCH;
}

}  // namespace orvo::simulator
