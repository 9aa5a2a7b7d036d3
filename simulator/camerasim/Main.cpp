// SPDX-License-Identifier: Apache-2.0
// camerasim: the program by which a person uses simulated devices.

#include <iostream>
#include <string>

#include <CLI/CLI.hpp>

#include "simulator/camerasim/TourCommand.h"

namespace {

using orvo::simulator::kBadUse;
using orvo::simulator::TourOptions;

}  // namespace

int main(int argc, char** argv) {
    CLI::App app("Boots simulated devices whose cameras are served through the provider library.",
                 "camerasim");
    app.require_subcommand(1);

    TourOptions tourOptions;
    tourOptions.deviceDirectory = ORVO_DEFAULT_DEVICE;
    CLI::App* tour = app.add_subcommand(
            "tour",
            "boot a device, walk through what its cameras do, and end with 0 if all of it"
            " was as expected");
    tour->add_option("DEVICE_DIR", tourOptions.deviceDirectory,
                     "directory with a device.yaml (default: " ORVO_DEFAULT_DEVICE ")");
    tour->add_flag("--keep", tourOptions.keep,
                   "leave the temporary directory, with the logs, there");

    tour->add_option("--pause", tourOptions.pauseSeconds, "seconds to wait after each step")
            ->check(CLI::Range(0, 3600));

    // What the program runs of itself inside a device's namespace; not for people.
    std::string stage;
    int stopFd = -1;
    CLI::App* inside = app.add_subcommand("inside")->group("");
    CLI::App* insideTour = inside->add_subcommand("tour");
    insideTour->add_option("--pause", tourOptions.pauseSeconds);
    insideTour->add_option("STAGE", stage)->required();
    insideTour->add_option("STOP_FD", stopFd)->required();
    insideTour->add_option("DEVICE_DIR", tourOptions.deviceDirectory)->required();
    inside->require_subcommand(1);

    try {
        app.parse(argc, argv);
    } catch (const CLI::Success& help) {
        return app.exit(help);
    } catch (const CLI::ParseError& mistake) {
        std::cerr << "camerasim: " << mistake.what() << "; see camerasim --help\n";
        return kBadUse;
    }
    if (*inside) return orvo::simulator::runTourInside(tourOptions, stage, stopFd);
    return orvo::simulator::runTour(tourOptions);
}
