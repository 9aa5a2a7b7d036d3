// SPDX-License-Identifier: Apache-2.0
// Witness: keeps every event, for one that is asked for may have come long ago.

#include "simulator/camerasim/tour/Witness.h"

#include <algorithm>
#include <chrono>
#include <cstdint>

#include "simulator/camerasim/Looks.h"

namespace orvo::simulator {

namespace {

std::string textOf(const std::string& kind, const std::string& who, const std::string& what) {
    return who + (kind == "torch" ? " torch " : " ") + what;
}

}  // namespace

bool Witness::check(const std::string& what, const std::string& expected, const std::string& seen) {
    return mNarrator.check(what + expected, seen, seen == expected);
}

int64_t Witness::now() {
    const auto reply = simulator::ask(mRoot, EventsRequest{INT64_MAX, false});
    return reply ? reply->next : 1;
}

std::optional<TimelineEvent> Witness::await(const std::function<bool(const TimelineEvent&)>& wanted,
                                            int64_t from, std::chrono::milliseconds patience) {
    const auto fits = [&](const TimelineEvent& event) {
        return event.number >= from && wanted(event);
    };
    const auto known = std::find_if(mHeard.begin(), mHeard.end(), fits);
    if (known != mHeard.end()) return *known;
    if (!mEvents) {
        auto begun = ControlClient::begin(mRoot, EventsRequest{1, true});
        if (!begun) return std::nullopt;
        mEvents.emplace(std::move(*begun));
    }
    const auto deadline = std::chrono::steady_clock::now() + patience;
    for (;;) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
                deadline - std::chrono::steady_clock::now());
        const auto message = mEvents->next(std::max(left, std::chrono::milliseconds(0)));
        if (!message || message->kind != ControlMessage::Kind::EVENT) return std::nullopt;
        const auto event = messageIn<TimelineEvent>(message->body);
        if (!event) return std::nullopt;
        mHeard.push_back(*event);
        if (fits(*event)) return *event;
    }
}

void Witness::rest(std::chrono::milliseconds pause) {
    (void)await([](const TimelineEvent&) { return false; }, 0, pause);
}

bool Witness::hear(const std::string& camera, const std::string& status, int64_t from,
                   const std::string& kind) {
    const auto event = await(
            [&](const TimelineEvent& one) {
                return one.kind == kind && one.who == camera && one.what == status;
            },
            from);
    const std::string text = textOf(kind, camera, status);
    if (event) {
        mLastHeard = event->seconds;
        return mNarrator.check("the framework hears " + text, text, true);
    }
    std::vector<std::string> others;
    for (const TimelineEvent& one : mHeard) {
        if (one.number < from || (one.kind != "camera" && one.kind != "torch")) continue;
        others.push_back(textOf(one.kind, one.who, one.what));
    }
    return mNarrator.check("the framework hears " + text, "it heard " + listed(others), false);
}

std::string Witness::property(const std::string& name) {
    const auto properties = simulator::ask(mRoot, PropsRequest());
    if (!properties) return properties.error().message();
    for (const PropertyState& property : *properties) {
        if (property.name == name) return property.value;
    }
    return "";
}

}  // namespace orvo::simulator
