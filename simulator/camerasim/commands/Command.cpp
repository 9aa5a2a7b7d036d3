// SPDX-License-Identifier: Apache-2.0
// Command: what all commands share.

#include "simulator/camerasim/commands/Command.h"

#include <algorithm>

#include <android-base/parsedouble.h>

namespace orvo::simulator {

const Words& Values::words(const std::string& key) const {
    static const Words kNone;
    const auto found = mWords.find(key);
    return found == mWords.end() ? kNone : found->second;
}

std::string Values::text(const std::string& key) const {
    return has(key) ? words(key)[0] : "";
}

double Values::number(const std::string& key, double otherwise) const {
    double value = otherwise;
    (void)android::base::ParseDouble(text(key).c_str(), &value);
    return value;
}

Argument deviceOption() {
    return {Argument::Kind::TEXT,
            "--device",
            "the device, if several run: its name, its description's directory, or its temporary"
            " directory",
            Argument::Completion::HEADSETS,
            {},
            "DEVICE"};
}

Argument formatOption() {
    return {Argument::Kind::TEXT,
            "--format",
            "table (for people) or json (for programs)",
            Argument::Completion::NONE,
            {"table", "json"},
            "FORMAT"};
}

const Command* findCommand(const std::string& name) {
    const std::vector<Command>& all = commandTable();
    const auto found = std::find_if(all.begin(), all.end(),
                                    [&](const Command& command) { return command.name == name; });
    return found == all.end() ? nullptr : &*found;
}

}  // namespace orvo::simulator
