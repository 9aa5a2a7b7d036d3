// SPDX-License-Identifier: Apache-2.0
// Request: one line that asks something of a running device.

#pragma once

#include <string>
#include <vector>

#include <android-base/result.h>

#include <nlohmann/json.hpp>

namespace orvo::simulator {

/** A request whose members are all there and of the right type; optional ones are filled in. */
struct Request {
    std::string command;
    nlohmann::json members;

    std::string text(const char* member) const { return members.at(member).get<std::string>(); }
    bool flag(const char* member) const { return members.at(member).get<bool>(); }

    /**
     * Reads one line, such as {"command":"hang","provider":"external/0"}. Members that the command
     * does not know are ignored.
     *
     * @return an error, one line, for anything that is not JSON, no known command, or lacks a
     *         member.
     */
    static android::base::Result<Request> parse(const std::string& line);

    /** Every command there is. */
    static std::vector<std::string> commands();
};

}  // namespace orvo::simulator
