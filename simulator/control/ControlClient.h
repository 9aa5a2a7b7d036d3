// SPDX-License-Identifier: Apache-2.0
// ControlClient: asks a running headset by its control socket.

#pragma once

#include <chrono>
#include <functional>
#include <string>
#include <utility>

#include <android-base/result.h>
#include <android-base/unique_fd.h>
#include <nlohmann/json.hpp>

#include "simulator/control/Complaint.h"
#include "simulator/control/Protocol.h"

namespace orvo::simulator {

/** Longer than the headset itself gives what it asks, so that its own words arrive in time. */
constexpr std::chrono::seconds kAnswerPatience{15};
constexpr std::chrono::milliseconds kForEver{-1};

/** One line of an answer. */
struct ControlMessage {
    enum class Kind { EVENT, RESULT, END };
    Kind kind;            ///< END: the headset has closed the connection
    nlohmann::json body;  ///< of an event or a result
};

/**
 * One connection, which carries one request on a line; it is answered by lines {"event": ...} and
 * one last {"result": ...}, or {"error": TEXT, "status": that camerasim ends with}. One thread.
 */
class ControlClient {
  public:
    /** `root` is the headset's temporary directory. An error if nobody accepts there. */
    static android::base::Result<ControlClient> connect(const std::string& root);
    /** Connects and sends the request. */
    static android::base::Result<ControlClient> begin(const std::string& root,
                                                      const Request& request);

    /**
     * Waits for the next line, kForEver if told so.
     *
     * @return the error that the headset answers; one for what is no such line, and after the
     *         patience.
     */
    android::base::Result<ControlMessage> next(std::chrono::milliseconds patience);

    /** True if next() has a whole line already; else the descriptor tells when to try. */
    bool hasLine() const { return mUnread.find('\n') != std::string::npos; }
    int descriptor() const { return mSocket.get(); }

  private:
    explicit ControlClient(android::base::unique_fd socket) : mSocket(std::move(socket)) {}

    android::base::unique_fd mSocket;
    std::string mUnread;  ///< what has arrived after the last line
};

/** Sends the request and waits for its result; events on the way are left out. */
android::base::Result<nlohmann::json> exchange(const std::string& root, const Request& request,
                                               std::chrono::milliseconds patience);

/** What a message says; an error if it is of another build. */
template <typename Message>
android::base::Result<Message> messageIn(const nlohmann::json& body) {
    try {
        return body.get<Message>();
    } catch (const nlohmann::json::exception&) {
        return didNotHappen(kOtherBuild);
    }
}

/** A whole request. */
template <typename Kind>
android::base::Result<typename Kind::Reply> ask(
        const std::string& root, const Kind& request,
        std::chrono::milliseconds patience = kAnswerPatience) {
    const auto result = exchange(root, request, patience);
    if (!result) return android::base::unexpected(result.error());
    return messageIn<typename Kind::Reply>(*result);
}

/**
 * Asks for events, and calls for each; waits for ever.
 *
 * @return whether the answer came to its end; false if the headset ended before.
 */
android::base::Result<bool> askForEvents(const std::string& root, const EventsRequest& request,
                                         const std::function<void(const TimelineEvent&)>& onEvent);

}  // namespace orvo::simulator
