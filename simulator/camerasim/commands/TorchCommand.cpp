// SPDX-License-Identifier: Apache-2.0
// TorchCommand: `camerasim torch`.

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

struct TorchOptions : DeviceOptions {
    std::string camera;
    std::string mode;
};

int switchTorch(const TorchOptions& options) {
    const auto answer = askDevice(
            options.device,
            {{"command", "torch"}, {"camera", options.camera}, {"on", options.mode == "on"}});
    if (!answer) return complain(answer.error());
    const std::string status = answer->at("status");
    if (status != "OK") {
        return complain(
                didNotHappen("the torch of " + options.camera + " was not switched: " + status));
    }
    std::cout << options.camera << ": torch " << options.mode << std::endl;
    return kAsExpected;
}

}  // namespace

void addTorch(Commands& commands) {
    auto options = std::make_shared<TorchOptions>();
    commands.add({"torch", "switch a camera's torch on or off",
                  "camerasim torch device@3.2/legacy/100 on"},
                 [options] { return switchTorch(*options); })
            .argument("CAMERA", options->camera, "in the framework's words; camerasim cameras")
            .argument("MODE", options->mode, "on or off", {"on", "off"})
            .device(*options);
}

}  // namespace orvo::simulator
