// SPDX-License-Identifier: Apache-2.0
// ProcessCommands: `camerasim kill`, `hang` and `start`.

#include <iostream>
#include <memory>
#include <string>

#include <nlohmann/json.hpp>

#include "simulator/camerasim/ExitStatus.h"
#include "simulator/camerasim/commands/Commands.h"
#include "simulator/camerasim/commands/Complaint.h"
#include "simulator/camerasim/commands/HeadsetFinder.h"

namespace orvo::simulator {

namespace {

struct ProcessOptions : DeviceOptions {
    std::string provider;
    bool clean = false;
};

/** Asks for something to be done to a process, and says in the past tense that it was. */
int act(const ProcessOptions& options, nlohmann::json request, const std::string& done) {
    request["provider"] = options.provider;
    const auto answer = askDevice(options.device, request);
    if (!answer) return complain(answer.error());
    std::cout << options.provider << ": " << done;
    if (answer->is_object() && answer->contains("pid")) {
        std::cout << ", process " << answer->at("pid").get<int>();
    }
    std::cout << std::endl;
    return kAsExpected;
}

Parameters& addProviderArgument(Parameters&& parameters, ProcessOptions& options) {
    return parameters
            .argument("PROVIDER", options.provider,
                      "a provider, such as external/0, or service: the camera provider service")
            .device(options);
}

void addKill(Commands& commands) {
    auto options = std::make_shared<ProcessOptions>();
    const auto body = [options] {
        if (options->clean) return act(*options, {{"command", "exit"}}, "told to end");
        return act(*options, {{"command", "kill"}, {"signal", "KILL"}}, "killed");
    };
    addProviderArgument(commands.add({"kill", "end a provider's process with SIGKILL",
                                      "camerasim kill external/0"},
                                     body),
                        *options)
            .flag("--clean", options->clean, "ask it to end, with SIGTERM, instead");
}

void addAct(Commands& commands, const CommandText& text, const std::string& done) {
    auto options = std::make_shared<ProcessOptions>();
    const auto body = [options, name = text.name, done] {
        return act(*options, {{"command", name}}, done);
    };
    addProviderArgument(commands.add(text, body), *options);
}

}  // namespace

void addKillHangAndStart(Commands& commands) {
    addKill(commands);
    addAct(commands,
           {"hang", "stop a provider's process, so that it answers no more",
            "camerasim hang external/0"},
           "hangs");
    addAct(commands,
           {"start", "start a provider's process that has ended, or let a hung one go on",
            "camerasim start external/0"},
           "runs");
}

}  // namespace orvo::simulator
