// SPDX-License-Identifier: Apache-2.0
// WaitCommand: `camerasim wait`.

#include <chrono>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include <android-base/strings.h>
#include <nlohmann/json.hpp>

#include "simulator/camerasim/ExitStatus.h"
#include "simulator/camerasim/commands/Commands.h"
#include "simulator/camerasim/commands/Complaint.h"
#include "simulator/camerasim/commands/HeadsetFinder.h"
#include "simulator/camerasim/commands/NamedRequest.h"
#include "simulator/camerasim/commands/Output.h"
#include "simulator/camerasim/commands/WaitCondition.h"

namespace orvo::simulator {

namespace {

struct WaitOptions : DeviceOptions {
    std::vector<std::string> condition;
    double timeout = 30;
};

int wait(const WaitOptions& options) {
    const auto condition = parseCondition(options.condition);
    if (!condition) return complain(condition.error());
    const auto root = chooseDevice(options.device);
    if (!root) return complain(root.error());
    // The device keeps the time; this only notices when it does not answer.
    const auto patience = std::chrono::milliseconds(static_cast<int64_t>(options.timeout * 1000)) +
                          kAnswerPatience;
    const auto answer = askByName(
            *root, {{"command", "wait"}, {"condition", *condition}, {"timeout", options.timeout}},
            patience);
    if (!answer) return complain(answer.error());
    const bool met = answer->at("met");
    if (options.json()) printDocument(*answer);
    const std::string text = android::base::Join(options.condition, " ");
    const std::string took = durationText(answer->at("seconds").get<double>());
    if (!met) return complain(didNotHappen("after " + took + " not yet: " + text));
    if (!options.json()) std::cout << text << " after " << took << std::endl;
    return kAsExpected;
}

}  // namespace

void addWait(Commands& commands) {
    auto options = std::make_shared<WaitOptions>();
    commands.add({"wait",
                  "wait until something is so; ends with 1 if it is not in time\n\n"
                  "CONDITION is one of\n"
                  "  camera NAME PRESENT|NOT_PRESENT\n"
                  "  provider NAME connected|disconnected|running|dead\n"
                  "  property NAME is|contains TEXT\n"
                  "  cameras NUMBER     (so many are PRESENT)\n",
                  "camerasim wait provider external/0 connected --timeout 10"},
                 [options] { return wait(*options); })
            .arguments("CONDITION", options->condition, 4, "the words of a condition")
            .seconds("--timeout", options->timeout, 86400, "seconds to wait at most (default: 30)")
            .device(*options)
            .format(*options);
}

}  // namespace orvo::simulator
