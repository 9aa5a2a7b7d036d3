// SPDX-License-Identifier: Apache-2.0
// LiveScreen: a terminal that is drawn on afresh again and again, and given back as it was.

#pragma once

#include <termios.h>

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include <android-base/unique_fd.h>

namespace orvo::simulator {

/**
 * The other screen of a terminal, for as long as this lives. SIGINT, SIGTERM and SIGWINCH are
 * blocked meanwhile and read from a descriptor, so that no end leaves the terminal changed; what is
 * typed is not shown. One thread; one at a time.
 */
class LiveScreen {
  public:
    LiveScreen();
    ~LiveScreen();
    LiveScreen(const LiveScreen&) = delete;
    LiveScreen& operator=(const LiveScreen&) = delete;

    /**
     * Replaces what is shown. What stands below is always there, its last lines if the terminal is
     * low; above it is a part of the other lines, which the arrow keys move, and how many are left
     * out. Lines that are too long are cut by the terminal.
     */
    void show(const std::vector<std::string>& above, const std::vector<std::string>& below);

    /** How many lines the terminal has. */
    static size_t rows();
    /** Readable when a key was pressed; -1 if nobody can press one. */
    int keys() const { return mBefore ? 0 : -1; }
    /** Takes the keys. @return whether one of them, q, asks to end. */
    bool takeKeys();
    /** Readable when a signal has come. */
    int signals() const { return mSignals.get(); }
    /** Takes the signal that has come. @return whether it asks to end. */
    bool isAskedToEnd() const;

  private:
    android::base::unique_fd mSignals;
    std::optional<termios> mBefore;  ///< how the terminal was; nothing if stdin is none
    size_t mScrolled = 0;            ///< lines above those that are shown
    size_t mRoom = 1;                ///< lines that were shown last above what is always there
};

}  // namespace orvo::simulator
