// SPDX-License-Identifier: Apache-2.0
// StopCommand: `camerasim stop`.

#include <chrono>
#include <iostream>
#include <memory>
#include <string>

#include "simulator/camerasim/ExitStatus.h"
#include "simulator/camerasim/commands/Commands.h"
#include "simulator/camerasim/commands/Complaint.h"
#include "simulator/camerasim/commands/HeadsetFinder.h"
#include "simulator/control/ControlClient.h"

namespace orvo::simulator {

using android::base::unexpected;

namespace {

/** Reads on until the device has closed the connection, which is when it has ended. */
android::base::Result<void> stop(const std::string& root) {
    auto client = ControlClient::begin(root, {{"command", "stop"}});
    if (!client) return unexpected(client.error());
    for (;;) {
        const auto message = client->next(kAnswerPatience);
        if (!message) return unexpected(message.error());
        if (message->kind == ControlMessage::Kind::END) return {};
    }
}

int stopDevice(const DeviceOptions& options) {
    const auto root = chooseDevice(options.device);
    if (!root) return complain(root.error());
    const auto stopped = stop(*root);
    if (!stopped) return complain(stopped.error());
    std::cout << "the device has ended" << std::endl;
    return kAsExpected;
}

}  // namespace

void addStop(Commands& commands) {
    auto options = std::make_shared<DeviceOptions>();
    commands.add({"stop", "shut the device down", "camerasim stop"},
                 [options] { return stopDevice(*options); })
            .device(*options);
}

}  // namespace orvo::simulator
