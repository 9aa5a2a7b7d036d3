// SPDX-License-Identifier: Apache-2.0
// ControlTalk: one connection to a control socket, as any program could make it.

#pragma once

#include <chrono>
#include <optional>
#include <string>

#include <android-base/unique_fd.h>

#include <nlohmann/json.hpp>

namespace orvo::simulator::testing {

class ControlTalk {
  public:
    /** Connects; ok() tells whether anybody accepted. */
    explicit ControlTalk(const std::string& socket);

    bool ok() const { return mConnection.ok(); }
    /** Sends the text as it is. */
    void send(const std::string& text);
    /** The next line, parsed; nothing if the other side hung up, or sent nothing for so long. */
    std::optional<nlohmann::json> next(std::chrono::seconds patience = std::chrono::seconds(30));
    /** Hangs up. */
    void hangUp() { mConnection.reset(); }

  private:
    android::base::unique_fd mConnection;
    std::string mRead;
};

/** One request and the last line of its answer; null if there was none. */
nlohmann::json ask(const std::string& socket, const nlohmann::json& request);

}  // namespace orvo::simulator::testing
