// SPDX-License-Identifier: Apache-2.0
// PropsCommand: `camerasim props`.

#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "simulator/camerasim/Colour.h"
#include "simulator/camerasim/ExitStatus.h"
#include "simulator/camerasim/commands/Commands.h"
#include "simulator/camerasim/commands/Complaint.h"
#include "simulator/camerasim/commands/HeadsetFinder.h"
#include "simulator/camerasim/commands/Output.h"

namespace orvo::simulator {

namespace {

int listProperties(const DeviceOptions& options) {
    const auto answer = askDevice(options.device, {{"command", "props"}});
    if (!answer) return complain(answer.error());
    if (options.json()) {
        printDocument(*answer);
        return kAsExpected;
    }
    Table table({"PROPERTY", "VALUE"});
    for (const PropertyState& property : answer->get<std::vector<PropertyState>>()) {
        table.addRow({property.name, "\"" + property.value + "\""});
    }
    if (table.empty()) {
        printNothing("no property has been set");
    } else {
        table.print(std::cout, wantsColour());
    }
    return kAsExpected;
}

}  // namespace

void addProps(Commands& commands) {
    auto options = std::make_shared<DeviceOptions>();
    commands.add({"props", "list the system properties", "camerasim props"},
                 [options] { return listProperties(*options); })
            .device(*options)
            .format(*options);
}

}  // namespace orvo::simulator
