// SPDX-License-Identifier: Apache-2.0
// Witness: asks a running headset and hears its events, for a tour that judges them.

#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "simulator/camerasim/tour/Narrator.h"
#include "simulator/control/ControlClient.h"

namespace orvo::simulator {

/** Whatever is not as expected is printed with what was seen instead. One thread. */
class Witness {
  public:
    /** @param root the headset's temporary directory. */
    Witness(std::string root, Narrator& narrator) : mRoot(std::move(root)), mNarrator(narrator) {}

    /** Asks; nothing if it is refused, which is printed. */
    template <typename Kind>
    std::optional<typename Kind::Reply> ask(const Kind& request,
                                            std::chrono::milliseconds patience = kAnswerPatience) {
        const auto reply = simulator::ask(mRoot, request, patience);
        if (reply) return *reply;
        mNarrator.check("the device answers", reply.error().message(), false);
        return std::nullopt;
    }

    /** Prints whether it is as expected. @return that. */
    bool check(const std::string& expected, const std::string& seen, bool agrees) {
        return mNarrator.check(expected, seen, agrees);
    }
    bool check(const std::string& what, const std::string& expected, const std::string& seen);

    /** The number of the next event: those from it on are news. */
    int64_t now();
    /** Waits for an event, among those from that number on; nothing if it does not come. */
    std::optional<TimelineEvent> await(const std::function<bool(const TimelineEvent&)>& wanted,
                                       int64_t from,
                                       std::chrono::milliseconds patience = kPatience);
    /** Does nothing for that long, or until the headset ends. */
    void rest(std::chrono::milliseconds pause);
    /** Waits for a camera's status, or a torch's, and prints whether it came. */
    bool hear(const std::string& camera, const std::string& status, int64_t from,
              const std::string& kind = "camera");
    /** When the last event that was heard had happened, in seconds since the boot. */
    double lastHeard() const { return mLastHeard; }

    /** The value of a property; "" if it is not set. */
    std::string property(const std::string& name);

  private:
    /** Far longer than any notification takes on a busy machine. */
    static constexpr std::chrono::seconds kPatience{10};

    const std::string mRoot;
    Narrator& mNarrator;
    std::optional<ControlClient> mEvents;  ///< that follows, once the first was asked for
    std::vector<TimelineEvent> mHeard;
    double mLastHeard = 0;
};

}  // namespace orvo::simulator
