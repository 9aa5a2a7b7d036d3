// SPDX-License-Identifier: Apache-2.0
// CamerasCommand: `camerasim cameras`.

#include <iostream>
#include <memory>
#include <string>

#include <nlohmann/json.hpp>

#include "simulator/camerasim/ExitStatus.h"
#include "simulator/camerasim/commands/Commands.h"
#include "simulator/camerasim/commands/Complaint.h"
#include "simulator/camerasim/commands/HeadsetFinder.h"
#include "simulator/camerasim/commands/Output.h"

namespace orvo::simulator {

namespace {

int listCameras(const DeviceOptions& options) {
    const auto answer = askDevice(options.device, {{"command", "state"}});
    if (!answer) return complain(answer.error());
    if (options.json()) {
        printDocument(answer->at("cameras"));
    } else {
        printCameras(answer->get<HeadsetState>());
    }
    return kAsExpected;
}

}  // namespace

void addCameras(Commands& commands) {
    auto options = std::make_shared<DeviceOptions>();
    commands.add({"cameras", "list the cameras as the framework sees them", "camerasim cameras"},
                 [options] { return listCameras(*options); })
            .device(*options)
            .format(*options);
}

}  // namespace orvo::simulator
