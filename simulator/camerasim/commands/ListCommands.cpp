// SPDX-License-Identifier: Apache-2.0
// ListCommands: `camerasim devices`, `cameras` and `events`.

#include <iostream>
#include <string>
#include <vector>

#include <android-base/parseint.h>
#include <nlohmann/json.hpp>

#include "simulator/camerasim/Looks.h"
#include "simulator/camerasim/commands/Command.h"
#include "simulator/camerasim/commands/HeadsetFinder.h"
#include "simulator/camerasim/commands/Output.h"
#include "simulator/camerasim/outside/Janitor.h"
#include "simulator/control/ControlClient.h"

namespace orvo::simulator {

namespace {

nlohmann::json toJson(const FoundHeadset& headset) {
    if (!headset.state) return {{"root", headset.root}, {"problem", headset.problem}};
    return {{"root", headset.root},
            {"name", headset.state->name},
            {"directory", headset.state->directory},
            {"pid", headset.state->pid},
            {"uptimeSeconds", headset.state->uptimeSeconds}};
}

void printTable(const std::vector<FoundHeadset>& headsets) {
    Table table({"DEVICE", "PROCESS", "RUNS FOR", "ROOT", "DESCRIPTION"});
    for (const FoundHeadset& headset : headsets) {
        if (headset.state) {
            table.addRow({headset.state->name, std::to_string(headset.state->pid),
                          durationText(headset.state->uptimeSeconds), headset.root,
                          headset.state->directory});
        } else {
            table.addRow({"", "", "", headset.root, ""});
            table.addRemark(headset.problem);
        }
    }
    table.print(std::cout, wantsColour());
}

}  // namespace

int listHeadsets(const Values& values) {
    const std::vector<FoundHeadset> headsets = runningHeadsets();
    if (values.json()) {
        nlohmann::json list = nlohmann::json::array();
        for (const FoundHeadset& headset : headsets) list.push_back(toJson(headset));
        printDocument(list);
    } else if (headsets.empty()) {
        printNothing("no device runs below " + directoryOfDirectories() +
                     "; start one with: camerasim up");
    } else {
        printTable(headsets);
    }
    return kAsExpected;
}

int listCameras(const Values& values) {
    const auto root = chooseHeadset(values.text("--device"));
    if (!root) return complain(root.error());
    const auto state = ask(*root, StateRequest());
    if (!state) return complain(state.error());
    if (values.json()) {
        printDocument(state->cameras);
    } else {
        printCameras(*state);
    }
    return kAsExpected;
}

int listEvents(const Values& values) {
    const auto root = chooseHeadset(values.text("--device"));
    if (!root) return complain(root.error());
    EventsRequest request{1, values.has("--follow")};
    (void)android::base::ParseInt(values.text("--from"), &request.from);
    bool any = false;
    const auto whole = askForEvents(*root, request, [&](const TimelineEvent& event) {
        any = true;
        if (values.json()) return printJsonLine(event);
        std::cout << numberedEvent(event, wantsColour()) << std::endl;
    });
    if (!whole) return complain(whole.error());
    if (request.follow) {
        std::cerr << "the device has ended" << std::endl;
    } else if (!*whole) {
        return complain(didNotHappen("the device has ended before it had told all"));
    } else if (!any && !values.json()) {
        printNothing("no event has the number " + std::to_string(request.from) + " or a later one");
    }
    return kAsExpected;
}

}  // namespace orvo::simulator
