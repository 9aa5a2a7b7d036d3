// SPDX-License-Identifier: Apache-2.0
// TourCommand: the outer half of `camerasim tour`.

#include "simulator/camerasim/tour/TourCommand.h"

#include <iostream>
#include <string>
#include <vector>

#include "simulator/camerasim/outside/Session.h"
#include "simulator/camerasim/tour/TourPlan.h"

namespace orvo::simulator {

namespace {

int refuse(const android::base::ResultError& mistake) {
    std::cerr << "camerasim: " << mistake.message() << std::endl;
    return kBadUse;
}

}  // namespace

int runTour(const TourOptions& options) {
    const auto device = HeadsetDescription::read(options.deviceDirectory);
    if (!device) return refuse(device.error());
    // The inner half makes it again; here it finds everything that is wrong before anything runs.
    const auto plan = TourPlan::make(*device);
    if (!plan) return refuse(plan.error());
    const auto installation = Installation::ofThisProgram();
    if (!installation) return refuse(installation.error());
    auto host = Session::prepare(*device, *installation, options.keep);
    if (!host) return refuse(host.error());

    const auto command = [&](int stopFd) -> std::vector<std::string> {
        return {installation->camerasim,
                "inside",
                "tour",
                "--pause",
                std::to_string(options.pauseSeconds),
                host->stage().root(),
                std::to_string(stopFd),
                device->directory};
    };
    const auto status = host->run(command);
    if (!status) return refuse(status.error());
    if (*status > 128) std::cerr << "camerasim: the tour was stopped" << std::endl;
    if (options.keep) std::cout << "Kept: " << host->stage().root() << std::endl;
    return *status;
}

}  // namespace orvo::simulator
