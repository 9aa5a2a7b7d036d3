// SPDX-License-Identifier: Apache-2.0
// DumpCommand: `camerasim dump`.

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

using Json = nlohmann::json;

namespace {

struct DumpOptions : DeviceOptions {
    std::string service;
};

int dump(const DumpOptions& options) {
    Json request = {{"command", "dump"}};
    if (!options.service.empty()) request["service"] = options.service;
    const auto answer = askDevice(options.device, request);
    if (!answer) return complain(answer.error());
    if (options.json()) {
        printDocument(*answer);
        return kAsExpected;
    }
    const std::string text = dumpText(*answer);
    if (text.empty()) {
        printNothing("the device serves no instance; camerasim ps says why");
    } else {
        std::cout << text << std::flush;
    }
    return kAsExpected;
}

}  // namespace

void addDump(Commands& commands) {
    auto options = std::make_shared<DumpOptions>();
    commands.add({"dump", "show what the services hold, as lshal debug does",
                  "camerasim dump legacy/0"},
                 [options] { return dump(*options); })
            .optionalArgument("SERVICE", options->service, "only this instance, such as legacy/0")
            .device(*options)
            .format(*options);
}

}  // namespace orvo::simulator
