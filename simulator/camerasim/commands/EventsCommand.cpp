// SPDX-License-Identifier: Apache-2.0
// EventsCommand: `camerasim events`.

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
#include "simulator/control/ControlClient.h"

namespace orvo::simulator {

namespace {

struct EventsOptions : DeviceOptions {
    bool follow = false;
    int64_t from = 1;
};

void printEvent(const nlohmann::json& event, bool json) {
    if (json) {
        printJsonLine(event);
    } else {
        std::cout << numberedEvent(event.get<TimelineEvent>(), wantsColour()) << std::endl;
    }
}

int listEvents(const EventsOptions& options) {
    const auto root = chooseDevice(options.device);
    if (!root) return complain(root.error());
    bool any = false;
    const auto whole = askForEvents(
            *root, {{"command", "events"}, {"from", options.from}, {"follow", options.follow}},
            [&](const nlohmann::json& event) {
                any = true;
                printEvent(event, options.json());
            });
    if (!whole) return complain(whole.error());
    if (options.follow) {
        std::cerr << "the device has ended" << std::endl;
    } else if (!*whole) {
        return complain(didNotHappen("the device has ended before it had told all"));
    } else if (!any && !options.json()) {
        printNothing("no event has the number " + std::to_string(options.from) + " or a later one");
    }
    return kAsExpected;
}

}  // namespace

void addEvents(Commands& commands) {
    auto options = std::make_shared<EventsOptions>();
    commands.add({"events", "list what has happened since the boot",
                  "camerasim events -f --from 20"},
                 [options] { return listEvents(*options); })
            .flag("-f,--follow", options->follow, "go on with whatever happens, until Ctrl-C")
            .option("--from", options->from, "N", "number of the first event (default: 1)")
            .device(*options)
            .format(*options);
}

}  // namespace orvo::simulator
