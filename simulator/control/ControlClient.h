// SPDX-License-Identifier: Apache-2.0
// ControlClient: asks a running device by its control socket.

#pragma once

#include <chrono>
#include <functional>
#include <string>

#include <android-base/result.h>
#include <android-base/unique_fd.h>
#include <nlohmann/json.hpp>

namespace orvo::simulator {

/** Longer than the device itself gives what it asks, so that its own words arrive in time. */
constexpr std::chrono::seconds kAnswerPatience{15};

/** One line of an answer. */
struct ControlMessage {
    enum class Kind { EVENT, RESULT, END };
    Kind kind;            ///< END: the device has closed the connection
    nlohmann::json body;  ///< of an event or a result
};

/**
 * One connection, which carries one request: `{"command": ...}` on a line, answered by lines
 * `{"event": ...}` and one last `{"result": ...}` or `{"error": ...}`. One thread.
 */
class ControlClient {
  public:
    /** `root` is the device's temporary directory. An error if nobody accepts there. */
    static android::base::Result<ControlClient> connect(const std::string& root);
    /** Connects and sends the request. */
    static android::base::Result<ControlClient> begin(const std::string& root,
                                                      const nlohmann::json& request);

    /**
     * Waits for the next line.
     *
     * @param patience negative: for ever.
     * @return an error for an `{"error"}` line, for what is no such line, and after the patience.
     */
    android::base::Result<ControlMessage> next(std::chrono::milliseconds patience);

    /** True if next() has a whole line already; else the descriptor tells when to try. */
    bool hasLine() const { return mUnread.find('\n') != std::string::npos; }
    int descriptor() const { return mSocket.get(); }

  private:
    explicit ControlClient(android::base::unique_fd socket) : mSocket(std::move(socket)) {}

    android::base::Result<void> send(const nlohmann::json& request);

    android::base::unique_fd mSocket;
    std::string mUnread;  ///< what has arrived after the last line
};

/** A whole request. @return its result; events on the way are left out. */
android::base::Result<nlohmann::json> ask(const std::string& root, const nlohmann::json& request,
                                          std::chrono::milliseconds patience = kAnswerPatience);

/**
 * As ask(), with each event on the way; waits for ever.
 *
 * @return whether the answer came to its end; false if the device ended before.
 */
android::base::Result<bool> askForEvents(const std::string& root, const nlohmann::json& request,
                                         const std::function<void(const nlohmann::json&)>& onEvent);

}  // namespace orvo::simulator
