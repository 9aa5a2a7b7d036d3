// SPDX-License-Identifier: Apache-2.0
// Requests: hands each request to what answers it, and watches the clock.

#include "simulator/camerasim/inside/Requests.h"

#include <poll.h>

#include <algorithm>
#include <chrono>
#include <optional>
#include <variant>

#include <nlohmann/json.hpp>

#include "simulator/control/Complaint.h"
#include "simulator/control/Condition.h"

namespace orvo::simulator {

using android::base::ResultError;
using Clock = std::chrono::steady_clock;

namespace {

constexpr std::chrono::seconds kLimit{10};
/** Longer waits are a mistake of whoever asks. */
constexpr double kLongestWait = 24 * 3600;
/** Nobody is told of changes of a property, so a condition on one is looked at that often. */
constexpr std::chrono::milliseconds kPropertyPause{50};

ResultError noAnswer(const std::string& hung) {
    const std::string line = "no answer within " + std::to_string(kLimit.count()) + " s";
    if (hung.empty()) return didNotHappen(line + ", though nobody is hung; see camerasim log");
    return didNotHappen(line + ": " + hung + "; camerasim start lets it go on");
}

/**
 * Waits for the bell or the client's end, at most that long; for ever without a limit. A client
 * that has only said its last word is still there.
 *
 * @return false if the client has left.
 */
bool awaitBell(const Timeline::Bell& bell, const Reply& reply,
               std::optional<std::chrono::milliseconds> patience) {
    pollfd ready[] = {{bell.fd(), POLLIN, 0}, {reply.connection(), 0, 0}};
    const int limit = patience ? static_cast<int>(std::max<int64_t>(0, patience->count())) : -1;
    (void)poll(ready, 2, limit);
    bell.silence();
    return ready[1].revents == 0;
}

}  // namespace

template <typename Kind>
void Requests::answer(const Kind& request, Reply& reply) {
    using Answer = Result<typename Kind::Reply>;
    // By value: what is still running after the limit has the request to itself.
    const auto answer = mCalls.within<Answer>(kLimit, [this, request] { return perform(request); });
    if (!answer) return reply.error(noAnswer(mHeadset.whoIsHung()));
    if (!*answer) return reply.error(answer->error());
    reply.result(**answer);
}

void Requests::answer(const std::string& line, Reply& reply) {
    const auto request = parseRequest(line);
    if (!request) return reply.error(request.error());
    std::visit([&](const auto& kind) { answer(kind, reply); }, *request);
}

void Requests::answer(const EventsRequest& request, Reply& reply) {
    int64_t next = std::max<int64_t>(1, request.from);
    const Timeline::Bell bell(mHeadset.timeline());
    do {
        for (const TimelineEvent& event : mHeadset.timeline().events(next)) {
            if (!reply.event(event)) return;
            next = event.number + 1;
        }
    } while (request.follow && awaitBell(bell, reply, std::nullopt));
    // Who asks for events that are still to come learns where the timeline stands.
    next = std::min(next, mHeadset.timeline().next());
    if (!request.follow) reply.result(EventsReply{next});
}

void Requests::answer(const WaitRequest& request, Reply& reply) {
    const auto condition = Condition::parse(request.condition);
    if (!condition) return reply.error(condition.error());
    if (!condition->provider().empty()) {
        const auto known = mHeadset.files().checkKnown(condition->provider());
        if (!known) return reply.error(badUse(known.error().message()));
    }
    const double timeout = std::clamp(request.timeout, 0.0, kLongestWait);
    const auto start = Clock::now();
    const auto deadline = start + std::chrono::duration_cast<Clock::duration>(
                                          std::chrono::duration<double>(timeout));
    const Timeline::Bell bell(mHeadset.timeline());
    for (;;) {
        const bool met = condition->met(mHeadset.facts());
        const auto now = Clock::now();
        if (met || now >= deadline) {
            const std::chrono::duration<double> waited = now - start;
            return reply.result(WaitReply{met, waited.count()});
        }
        // Rounded up, or the last millisecond would be spent in looking again and again.
        auto patience = std::chrono::ceil<std::chrono::milliseconds>(deadline - now);
        if (condition->isAboutProperty()) patience = std::min(patience, kPropertyPause);
        if (!awaitBell(bell, reply, patience)) return;
    }
}

void Requests::answer(const StopRequest& /*request*/, Reply& reply) {
    note(mHeadset.files().description().name, "stop");
    reply.result(StopReply{mHeadset.endPrograms()});
    mHeadset.letGo();
}

Requests::Result<HeadsetState> Requests::perform(const StateRequest& /*request*/) {
    return mHeadset.state(true);
}

}  // namespace orvo::simulator
