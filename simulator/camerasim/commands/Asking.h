// SPDX-License-Identifier: Apache-2.0
// asking: makes a command of a request and of how its reply is printed.

#pragma once

#include <string>
#include <vector>

#include "simulator/camerasim/commands/Command.h"
#include "simulator/camerasim/commands/HeadsetFinder.h"
#include "simulator/camerasim/commands/Output.h"
#include "simulator/control/ControlClient.h"

namespace orvo::simulator {

/** How long the reply is waited for: the headset keeps the time of a wait itself. */
template <typename Kind>
std::chrono::milliseconds patienceFor(const Kind& /*request*/) {
    return kAnswerPatience;
}
inline std::chrono::milliseconds patienceFor(const WaitRequest& request) {
    return std::chrono::milliseconds(static_cast<int64_t>(request.timeout * 1000)) +
           kAnswerPatience;
}

/** A reply as JSON; of a list that was asked of one service, its only member. */
template <typename Reply>
void printReply(const Reply& reply, bool /*ofOneService*/) {
    printDocument(reply);
}
template <typename Reply>
void printReply(const std::vector<Reply>& reply, bool ofOneService) {
    if (ofOneService && reply.size() == 1) return printDocument(reply[0]);
    printDocument(reply);
}

/**
 * A command that asks one thing of a headset and prints the reply, for people or as one document.
 *
 * @param request makes it of what was typed.
 * @param print writes the reply for people.
 * @param failure why the thing did not happen after all, one line; "" if it did.
 */
template <typename Kind>
Command asking(Command command, Kind (*request)(const Values&),
               void (*print)(const typename Kind::Reply&, const Values&),
               std::string (*failure)(const typename Kind::Reply&, const Values&) = nullptr) {
    command.arguments.push_back(deviceOption());
    command.arguments.push_back(formatOption());
    command.run = [=](const Values& values) {
        const auto root = chooseHeadset(values.text("--device"));
        if (!root) return complain(root.error());
        const Kind asked = request(values);
        const auto reply = ask(*root, asked, patienceFor(asked));
        if (!reply) return complain(reply.error());
        const std::string why = failure == nullptr ? "" : failure(*reply, values);
        if (values.json()) {
            printReply(*reply, values.has("SERVICE") || values.has("--service"));
        } else if (why.empty()) {
            print(*reply, values);
        }
        return why.empty() ? kAsExpected : complain(didNotHappen(why));
    };
    return command;
}

}  // namespace orvo::simulator
