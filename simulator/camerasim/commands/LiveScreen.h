// SPDX-License-Identifier: Apache-2.0
// LiveScreen: a terminal that is drawn on afresh again and again, and given back as it was.

#pragma once

#include <string>

#include <android-base/unique_fd.h>

namespace orvo::simulator {

/**
 * The other screen of a terminal, for as long as this lives. SIGINT, SIGTERM and SIGWINCH are
 * blocked meanwhile and read from a descriptor, so that no end leaves the terminal changed. One
 * thread; one at a time.
 */
class LiveScreen {
  public:
    LiveScreen();
    ~LiveScreen();
    LiveScreen(const LiveScreen&) = delete;
    LiveScreen& operator=(const LiveScreen&) = delete;

    /** Replaces what is shown. Lines that are too long are cut by the terminal. */
    void show(const std::string& text);

    /** Readable when a signal has come. */
    int signals() const { return mSignals.get(); }
    /** Takes the signal that has come. @return whether it asks to end. */
    bool isAskedToEnd() const;

  private:
    android::base::unique_fd mSignals;
};

}  // namespace orvo::simulator
