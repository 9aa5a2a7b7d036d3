// SPDX-License-Identifier: Apache-2.0
// WatchCommand: `camerasim watch`.

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <deque>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

#include <android-base/strings.h>

#include "simulator/camerasim/Looks.h"
#include "simulator/camerasim/commands/Command.h"
#include "simulator/camerasim/commands/HeadsetFinder.h"
#include "simulator/camerasim/commands/LiveScreen.h"
#include "simulator/camerasim/commands/Output.h"
#include "simulator/control/ControlClient.h"

namespace orvo::simulator {

using android::base::Result;
using android::base::unexpected;
using std::chrono::milliseconds;

namespace {

constexpr size_t kEventsShown = 10;
/** On a low terminal the events have that part of it. */
constexpr size_t kEventsPart = 3;

/** Ctrl-C is not heard meanwhile. */
constexpr milliseconds kStatePatience{3000};

/** Events that come in a row are drawn once; but what never ends must not hold up the picture and
 *  Ctrl-C. */
constexpr int kQuietMilliseconds = 50;
constexpr milliseconds kLongestUndrawn{500};

/** Follows a device's events and draws what it is like after them. */
class Watch {
  public:
    explicit Watch(std::string root) : mRoot(std::move(root)) {}

    /** Draws until the device ends or a signal or a key says so. @return whether it has ended. */
    Result<bool> onTerminal();
    /** Prints what is, then a line for each event, until the device ends. */
    Result<bool> asLines();

  private:
    /** Learns what has happened so far, so that following begins where that ends. */
    Result<void> readHistory();
    EventsRequest followRequest() const { return {mNext, true}; }
    void remember(const TimelineEvent& event);
    void draw(LiveScreen& screen) const;
    /** Takes the events that come in a row. @return false if the device has ended. */
    Result<bool> takeEvents(ControlClient& events);

    const std::string mRoot;
    int64_t mNext = 1;
    std::deque<TimelineEvent> mLast;  ///< those that are shown
};

void Watch::remember(const TimelineEvent& event) {
    mLast.push_back(event);
    mNext = mLast.back().number + 1;
    if (mLast.size() > kEventsShown) mLast.pop_front();
}

Result<void> Watch::readHistory() {
    const auto whole = askForEvents(mRoot, EventsRequest(),
                                    [this](const TimelineEvent& event) { remember(event); });
    if (!whole) return unexpected(whole.error());
    return {};
}

void Watch::draw(LiveScreen& screen) const {
    std::ostringstream out;
    const auto state = ask(mRoot, StateRequest(), kStatePatience);
    if (state) {
        out << headerOf(*state) << "\n\n";
        providerTable(*state).print(out, wantsColour());
        out << "\n";
        cameraTable(*state).print(out, wantsColour());
    } else {
        out << state.error().message() << "\n";
    }
    std::vector<std::string> below;
    const size_t most = std::max<size_t>(1, LiveScreen::rows() / kEventsPart);
    const size_t left = mLast.size() > most ? mLast.size() - most : 0;
    for (size_t i = left; i < mLast.size(); i++) {
        below.push_back(numberedEvent(mLast[i], wantsColour()));
    }
    below.push_back(painted("Ctrl-C or q ends this; the device stays", Paint::DIM, wantsColour()));
    screen.show(android::base::Split(out.str(), "\n"), below);
}

Result<bool> Watch::takeEvents(ControlClient& events) {
    const auto deadline = std::chrono::steady_clock::now() + kLongestUndrawn;
    pollfd more{events.descriptor(), POLLIN, 0};
    while (std::chrono::steady_clock::now() < deadline &&
           (events.hasLine() || poll(&more, 1, kQuietMilliseconds) > 0)) {
        const auto message = events.next(kStatePatience);
        if (!message) return unexpected(message.error());
        if (message->kind != ControlMessage::Kind::EVENT) return false;
        const auto event = messageIn<TimelineEvent>(message->body);
        if (!event) return unexpected(event.error());
        remember(*event);
    }
    return true;
}

Result<bool> Watch::onTerminal() {
    const auto known = readHistory();
    if (!known) return unexpected(known.error());
    auto events = ControlClient::begin(mRoot, followRequest());
    if (!events) return unexpected(events.error());
    LiveScreen screen;
    for (;;) {
        draw(screen);
        pollfd awaited[] = {{events->descriptor(), POLLIN, 0},
                            {screen.signals(), POLLIN, 0},
                            {screen.keys(), POLLIN, 0}};
        TEMP_FAILURE_RETRY(poll(awaited, 3, events->hasLine() ? 0 : -1));
        if (awaited[1].revents != 0 && screen.isAskedToEnd()) return false;
        if (awaited[2].revents != 0 && screen.takeKeys()) return false;
        if (awaited[0].revents == 0 && !events->hasLine()) continue;
        const auto running = takeEvents(*events);
        if (!running) return unexpected(running.error());
        if (!*running) return true;
    }
}

Result<bool> Watch::asLines() {
    const auto known = readHistory();
    if (!known) return unexpected(known.error());
    const auto state = ask(mRoot, StateRequest());
    if (!state) return unexpected(state.error());
    std::cout << headerOf(*state) << "\n\n";
    providerTable(*state).print(std::cout, false);
    std::cout << "\n";
    printCameras(*state);
    std::cout << std::endl;
    const auto whole = askForEvents(mRoot, followRequest(), [](const TimelineEvent& event) {
        std::cout << numberedEvent(event, false) << std::endl;
    });
    if (!whole) return unexpected(whole.error());
    return true;
}

}  // namespace

int watch(const Values& values) {
    const auto root = chooseHeadset(values.text("--device"));
    if (!root) return complain(root.error());
    Watch watch(*root);
    const auto ended = isatty(STDOUT_FILENO) != 0 ? watch.onTerminal() : watch.asLines();
    if (!ended) return complain(ended.error());
    if (*ended) std::cerr << "the device has ended" << std::endl;
    return kAsExpected;
}

}  // namespace orvo::simulator
