// SPDX-License-Identifier: Apache-2.0
// Requests: hands each request to what answers it, and watches the clock.

#include "simulator/camerasim/inside/Requests.h"

#include <poll.h>

#include <algorithm>
#include <chrono>
#include <optional>

#include <nlohmann/json.hpp>

#include "simulator/camerasim/inside/Condition.h"
#include "simulator/control/WithinLimit.h"

namespace orvo::simulator {

using android::base::Error;
using Clock = std::chrono::steady_clock;

namespace {

constexpr std::chrono::seconds kLimit{10};
/** Longer waits are a mistake of whoever asks. */
constexpr double kLongestWait = 24 * 3600;
/** Nobody is told of changes of a property, so a condition on one is looked at that often. */
constexpr std::chrono::milliseconds kPropertyPause{50};

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

void Requests::answer(const std::string& line, Reply& reply) {
    const auto request = Request::parse(line);
    if (!request) return reply.error(request.error().message());
    if (request->command == "events") return tellEvents(*request, reply);
    if (request->command == "wait") return waitFor(*request, reply);
    if (request->command == "stop") return stop(reply);
    const Answer answer = performWithinLimit(*request);
    if (!answer) return reply.error(answer.error().message());
    reply.result(*answer);
}

Requests::Answer Requests::performWithinLimit(const Request& request) {
    // By value: what is still running after the limit has the request and the device to itself.
    const auto answer = withinLimit<Answer>(kLimit, [this, request] { return perform(request); });
    if (answer) return *answer;
    const std::string hung = mDevice.whoIsHung();
    if (hung.empty()) {
        return Error() << "no answer within " << kLimit.count()
                       << " s, though nobody is hung; see camerasim log";
    }
    return Error() << "no answer within " << kLimit.count() << " s: " << hung
                   << "; camerasim start lets it go on";
}

Requests::Answer Requests::perform(const Request& request) {
    const std::string& command = request.command;
    if (command == "state") return nlohmann::json(mDevice.state(true));
    if (command == "tags") return tags(request);
    if (command == "dump") return dump(request);
    if (command == "props") return props();
    if (command == "open") return open(request);
    if (command == "close") return close(request);
    if (command == "torch") return torch(request);
    if (command == "kill") return kill(request);
    if (command == "exit") return exit(request);
    if (command == "hang") return hang(request);
    if (command == "resume") return resume(request);
    if (command == "start") return start(request);
    return plug(request, command == "plug");
}

void Requests::tellEvents(const Request& request, Reply& reply) {
    const bool follow = request.flag("follow");
    int64_t next = std::max<int64_t>(1, request.members["from"].get<int64_t>());
    const Timeline::Bell bell(mDevice.timeline());
    do {
        for (const TimelineEvent& event : mDevice.timeline().events(next)) {
            if (!reply.event(event)) return;
            next = event.number + 1;
        }
    } while (follow && awaitBell(bell, reply, std::nullopt));
    if (!follow) reply.result({{"next", next}});
}

void Requests::waitFor(const Request& request, Reply& reply) {
    const auto condition = Condition::parse(request.members["condition"]);
    if (!condition) return reply.error(condition.error().message());
    if (!condition->provider().empty()) {
        const auto known = mDevice.files().checkKnown(condition->provider());
        if (!known) return reply.error(known.error().message());
    }
    const double timeout = std::clamp(request.members["timeout"].get<double>(), 0.0, kLongestWait);
    const auto start = Clock::now();
    const auto deadline = start + std::chrono::duration_cast<Clock::duration>(
                                          std::chrono::duration<double>(timeout));
    const Timeline::Bell bell(mDevice.timeline());
    for (;;) {
        const bool met = condition->met(mDevice.facts());
        const auto now = Clock::now();
        if (met || now >= deadline) {
            const std::chrono::duration<double> waited = now - start;
            return reply.result({{"met", met}, {"seconds", waited.count()}});
        }
        // Rounded up, or the last millisecond would be spent in looking again and again.
        auto patience = std::chrono::ceil<std::chrono::milliseconds>(deadline - now);
        if (condition->isAboutProperty()) patience = std::min(patience, kPropertyPause);
        if (!awaitBell(bell, reply, patience)) return;
    }
}

void Requests::stop(Reply& reply) {
    note(mDevice.files().description().name, "stop");
    mDevice.endPrograms();
    reply.result(nlohmann::json::object());
    mDevice.letGo();
}

}  // namespace orvo::simulator
