// SPDX-License-Identifier: Apache-2.0
// DevicesCommand: `camerasim devices`.

#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "simulator/camerasim/Colour.h"
#include "simulator/camerasim/ExitStatus.h"
#include "simulator/camerasim/commands/Commands.h"
#include "simulator/camerasim/commands/HeadsetFinder.h"
#include "simulator/camerasim/commands/Output.h"
#include "simulator/camerasim/outside/Janitor.h"

namespace orvo::simulator {

namespace {

nlohmann::json toJson(const FoundHeadset& device) {
    if (!device.state) return {{"root", device.root}, {"problem", device.problem}};
    return {{"root", device.root},
            {"name", device.state->name},
            {"directory", device.state->directory},
            {"pid", device.state->pid},
            {"uptimeSeconds", device.state->uptimeSeconds}};
}

void printTable(const std::vector<FoundHeadset>& devices) {
    Table table({"DEVICE", "PROCESS", "RUNS FOR", "ROOT", "DESCRIPTION"});
    for (const FoundHeadset& device : devices) {
        if (device.state) {
            table.addRow({device.state->name, std::to_string(device.state->pid),
                          durationText(device.state->uptimeSeconds), device.root,
                          device.state->directory});
        } else {
            table.addRow({"", "", "", device.root, ""});
            table.addRemark(device.problem);
        }
    }
    table.print(std::cout, wantsColour());
}

int listDevices(const DeviceOptions& options) {
    const std::vector<FoundHeadset> devices = runningDevices();
    if (options.json()) {
        nlohmann::json list = nlohmann::json::array();
        for (const FoundHeadset& device : devices) list.push_back(toJson(device));
        printDocument(list);
    } else if (devices.empty()) {
        printNothing("no device runs below " + directoryOfDirectories() +
                     "; start one with: camerasim up");
    } else {
        printTable(devices);
    }
    return kAsExpected;
}

}  // namespace

void addDevices(Commands& commands) {
    auto options = std::make_shared<DeviceOptions>();
    commands.add({"devices", "list the devices that run", "camerasim devices"},
                 [options] { return listDevices(*options); })
            .format(*options);
}

}  // namespace orvo::simulator
