// SPDX-License-Identifier: Apache-2.0
// NamesCommand: the words that a shell completes; not for people.

#include <chrono>
#include <iostream>
#include <memory>
#include <string>

#include "simulator/camerasim/ExitStatus.h"
#include "simulator/camerasim/commands/Commands.h"
#include "simulator/camerasim/commands/HeadsetFinder.h"
#include "simulator/control/ControlClient.h"

namespace orvo::simulator {

namespace {

struct NamesOptions : DeviceOptions {
    std::string kind;
    std::string of;
};

void print(const std::string& word) {
    std::cout << word << "\n";
}

void printOfProvider(const HeadsetState& state, const std::string& instance) {
    for (const ProviderState& provider : state.providers) {
        if (provider.instance != instance) continue;
        for (const CameraOfProvider& device : provider.devices) print(device.name);
    }
}

void printOfDevice(const NamesOptions& options) {
    // A shell that completes must neither be written to nor be kept waiting.
    const auto root = chooseDevice(options.device);
    if (!root) return;
    const auto answer = ask(*root, {{"command", "state"}}, std::chrono::seconds(2));
    if (!answer) return;
    const HeadsetState state = answer->get<HeadsetState>();
    if (options.kind == "devices-of") return printOfProvider(state, options.of);
    if (options.kind == "cameras") {
        for (const CameraState& camera : state.cameras) print(camera.name);
    } else if (options.kind == "services") {
        for (const std::string& instance : state.service.instances) print(instance);
    } else if (options.kind == "providers") {
        for (const ProviderState& provider : state.providers) print(provider.instance);
    }
}

int printNames(const NamesOptions& options, const Commands& commands) {
    if (options.kind == "commands") {
        for (const std::string& name : commands.names()) print(name);
    } else if (options.kind == "options") {
        for (const std::string& name : commands.optionsOf(options.of)) print(name);
    } else if (options.kind == "devices") {
        for (const FoundHeadset& device : runningDevices()) {
            if (device.state) print(device.state->name);
        }
    } else {
        printOfDevice(options);
    }
    return kAsExpected;
}

}  // namespace

void addNames(Commands& commands) {
    auto options = std::make_shared<NamesOptions>();
    commands.addHidden(
                    {"names", "print words to complete", "camerasim names devices-of external/0"},
                    [options, &commands] { return printNames(*options, commands); })
            .argument("KIND", options->kind, "what kind of words")
            .optionalArgument("OF", options->of, "of which command or provider")
            .device(*options);
}

}  // namespace orvo::simulator
