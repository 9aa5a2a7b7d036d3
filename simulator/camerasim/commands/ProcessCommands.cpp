// SPDX-License-Identifier: Apache-2.0
// ProcessCommands: `camerasim kill`, `hang` and `start`.

#include <iostream>
#include <memory>
#include <string>

#include "simulator/camerasim/ExitStatus.h"
#include "simulator/camerasim/commands/Commands.h"
#include "simulator/camerasim/commands/Complaint.h"
#include "simulator/camerasim/commands/DeviceFinder.h"

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

void addProviderArgument(CLI::App* command, ProcessOptions& options) {
    command->add_option("PROVIDER", options.provider,
                        "a provider, such as external/0, or service: the camera provider service")
            ->required();
    addDeviceOption(command, options);
}

void addKill(Commands& commands) {
    auto options = std::make_shared<ProcessOptions>();
    CLI::App* kill = commands.add(
            {"kill", "end a provider's process with SIGKILL", "camerasim kill external/0"},
            [options] {
                if (options->clean) return act(*options, {{"command", "exit"}}, "told to end");
                return act(*options, {{"command", "kill"}, {"signal", "KILL"}}, "killed");
            });
    addProviderArgument(kill, *options);
    kill->add_flag("--clean", options->clean, "ask it to end, with SIGTERM, instead");
}

}  // namespace

void addKillHangAndStart(Commands& commands) {
    addKill(commands);
    auto hung = std::make_shared<ProcessOptions>();
    addProviderArgument(
            commands.add({"hang", "stop a provider's process, so that it answers no more",
                          "camerasim hang external/0"},
                         [hung] {
                             return act(*hung, {{"command", "hang"}}, "hangs");
                         }),
            *hung);
    auto started = std::make_shared<ProcessOptions>();
    addProviderArgument(
            commands.add(
                    {"start", "start a provider's process that has ended, or let a hung one go on",
                     "camerasim start external/0"},
                    [started] {
                        return act(*started, {{"command", "start"}}, "runs");
                    }),
            *started);
}

}  // namespace orvo::simulator
