// SPDX-License-Identifier: Apache-2.0
// LiveScreen: the usual control sequences.

#include "simulator/camerasim/commands/LiveScreen.h"

#include <signal.h>
#include <sys/ioctl.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
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

/** How far a key moves what is shown; a page is that long. */
int movementOf(const std::string& key, int page) {
    if (key == "\033[A" || key == "k") return -1;
    if (key == "\033[B" || key == "j") return 1;
    if (key == "\033[5~") return -page;
    if (key == "\033[6~" || key == " ") return page;
    return 0;
}

}  // namespace

size_t LiveScreen::rows() {
    winsize size{};
    if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_row == 0) return 24;
    return size.ws_row;
}

LiveScreen::LiveScreen() {
    const sigset_t signals = handledSignals();
    sigprocmask(SIG_BLOCK, &signals, nullptr);
    mSignals.reset(signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK));
    termios terminal{};
    if (tcgetattr(STDIN_FILENO, &terminal) == 0) {
        mBefore = terminal;
        terminal.c_lflag &= ~(ECHO | ICANON);
        tcsetattr(STDIN_FILENO, TCSANOW, &terminal);
    }
    std::cout << kEnter << std::flush;
}

LiveScreen::~LiveScreen() {
    std::cout << kLeave << std::flush;
    if (mBefore) tcsetattr(STDIN_FILENO, TCSAFLUSH, &*mBefore);
    const sigset_t signals = handledSignals();
    sigprocmask(SIG_UNBLOCK, &signals, nullptr);
}

void LiveScreen::show(const std::vector<std::string>& above,
                      const std::vector<std::string>& below) {
    const size_t fixed = std::min(below.size(), rows());
    mRoom = rows() - fixed;
    const bool fits = above.size() <= mRoom;
    if (!fits && mRoom > 0) mRoom--;  // for the line that counts
    mScrolled = fits ? 0 : std::min(mScrolled, above.size() - mRoom);
    const size_t shown = std::min(mRoom, above.size());
    std::vector<std::string> lines(above.begin() + mScrolled, above.begin() + mScrolled + shown);
    if (!fits && fixed < rows()) {
        lines.push_back(std::to_string(above.size() - shown) + " more; the arrow keys move");
    }
    lines.insert(lines.end(), below.end() - fixed, below.end());
    std::cout << kHome << android::base::Join(lines, std::string(kClearLine) + "\n") << kClearBelow
              << std::flush;
}

bool LiveScreen::takeKeys() {
    char bytes[64];
    const ssize_t count = TEMP_FAILURE_RETRY(read(STDIN_FILENO, bytes, sizeof(bytes)));
    if (count <= 0) return true;
    const std::string key(bytes, count);
    const int moved = static_cast<int>(mScrolled) + movementOf(key, static_cast<int>(mRoom));
    mScrolled = std::max(0, moved);
    return key.find('q') != std::string::npos;  // several keys may have come at once
}

bool LiveScreen::isAskedToEnd() const {
    signalfd_siginfo info{};
    if (read(mSignals.get(), &info, sizeof(info)) != sizeof(info)) return false;
    return info.ssi_signo != SIGWINCH;
}

}  // namespace orvo::simulator
