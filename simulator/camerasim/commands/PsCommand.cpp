// SPDX-License-Identifier: Apache-2.0
// PsCommand: `camerasim ps`.

#include <iostream>
#include <memory>
#include <string>

#include <nlohmann/json.hpp>

#include "simulator/camerasim/Colour.h"
#include "simulator/camerasim/ExitStatus.h"
#include "simulator/camerasim/commands/Commands.h"
#include "simulator/camerasim/commands/Complaint.h"
#include "simulator/camerasim/commands/HeadsetFinder.h"
#include "simulator/camerasim/commands/Output.h"

namespace orvo::simulator {

namespace {

int listProviders(const DeviceOptions& options) {
    const auto answer = askDevice(options.device, {{"command", "state"}});
    if (!answer) return complain(answer.error());
    if (options.json()) {
        printDocument(*answer);
        return kAsExpected;
    }
    const HeadsetState state = answer->get<HeadsetState>();
    std::cout << headerOf(state) << "\n";
    if (state.providers.empty()) {
        printNothing("neither the map, the manifest nor device.yaml names a provider");
    } else {
        providerTable(state).print(std::cout, wantsColour());
    }
    return kAsExpected;
}

}  // namespace

void addPs(Commands& commands) {
    auto options = std::make_shared<DeviceOptions>();
    commands.add({"ps",
                  "list the providers: declared, running, connected, how often each died, and what"
                  " is wrong",
                  "camerasim ps --format=json"},
                 [options] { return listProviders(*options); })
            .device(*options)
            .format(*options);
}

}  // namespace orvo::simulator
