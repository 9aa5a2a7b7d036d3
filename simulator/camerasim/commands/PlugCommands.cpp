// SPDX-License-Identifier: Apache-2.0
// PlugCommands: `camerasim plug` and `unplug`.

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

struct PlugOptions : DeviceOptions {
    std::string provider;
    std::string camera;
};

int plug(const PlugOptions& options, const std::string& command) {
    const auto answer = askDevice(
            options.device,
            {{"command", command}, {"provider", options.provider}, {"device", options.camera}});
    if (!answer) return complain(answer.error());
    std::cout << answer->at("device").get<std::string>() << ": "
              << answer->at("status").get<std::string>() << std::endl;
    return kAsExpected;
}

void addOne(Commands& commands, const std::string& name, const std::string& sentence) {
    auto options = std::make_shared<PlugOptions>();
    commands.add({name, sentence, "camerasim " + name + " external/0 usb-7C21"},
                 [options, name] { return plug(*options, name); })
            .argument("PROVIDER", options->provider, "such as external/0")
            .argument("CAMERA", options->camera,
                      "in the provider's words, such as device@3.2/external/100, or its id")
            .device(*options);
}

}  // namespace

void addPlugAndUnplug(Commands& commands) {
    addOne(commands, "plug", "plug a camera into a provider");
    addOne(commands, "unplug", "pull a camera out of a provider");
}

}  // namespace orvo::simulator
