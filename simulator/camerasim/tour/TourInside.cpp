// SPDX-License-Identifier: Apache-2.0
// TourInside: the inner half of `camerasim tour`, which supervises the device and walks through it.

#include <stdio.h>
#include <unistd.h>

#include <chrono>
#include <iostream>
#include <string>

#include <hidl/HidlTransportSupport.h>

#include "simulator/camerasim/inside/InnerHalf.h"
#include "simulator/camerasim/inside/Programs.h"
#include "simulator/camerasim/outside/Installation.h"
#include "simulator/camerasim/tour/Tour.h"
#include "simulator/camerasim/tour/TourCommand.h"

namespace orvo::simulator {

namespace {

/** Notifications come while the tour waits for them. */
constexpr size_t kPoolThreads = 4;

}  // namespace

int runTourInside(const TourOptions& options, const std::string& root, int stopFd) {
    const Stage stage(root);
    redirectLog(stage.logOf("camerasim"));
    const auto device = HeadsetDescription::read(options.deviceDirectory);
    if (!device) return filesChanged();
    const auto plan = TourPlan::make(*device);
    const auto installation = Installation::ofThisProgram();
    if (!plan || !installation) return filesChanged();
    android::hardware::configureRpcThreadpool(kPoolThreads, false);
    Narrator narrator(std::cout, wantsColour());
    Programs running(*device, *installation, stage);
    whenTold(stopFd, [&running] {
        running.supervisor().stopAll();
        _exit(kNotAsExpected);
    });
    narrator.title("A guided tour of the simulated device \"" + device->name + "\"");
    const auto start = std::chrono::steady_clock::now();
    const bool good =
            Tour(*plan, running, narrator, std::chrono::seconds(options.pauseSeconds)).run();
    if (!good) {
        printTails(running);
        running.supervisor().stopAll();
        std::cerr << "camerasim: the tour was not as expected" << std::endl;
    } else {
        char seconds[32];
        const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
        snprintf(seconds, sizeof(seconds), "%.1f s", took.count());
        narrator.closing("All " + std::to_string(narrator.steps()) +
                                 " steps were as expected, in " + seconds + ".",
                         true);
    }
    std::cout.flush();
    // Threads of the pool still run; ending without destructors is the only safe way out.
    _exit(good ? kAsExpected : kNotAsExpected);
}

}  // namespace orvo::simulator
