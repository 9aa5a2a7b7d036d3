// SPDX-License-Identifier: Apache-2.0
// camerasim: the program by which a person uses simulated devices.

#include <iostream>
#include <string>

#include <CLI/CLI.hpp>

#include "simulator/camerasim/commands/Commands.h"
#include "simulator/camerasim/commands/UpCommand.h"
#include "simulator/camerasim/outside/Installation.h"
#include "simulator/camerasim/tour/TourCommand.h"

namespace {

using orvo::simulator::Commands;
using orvo::simulator::Installation;
using orvo::simulator::kBadUse;
using orvo::simulator::TourOptions;
using orvo::simulator::UpOptions;

/** What the program runs of itself inside a device's namespace; not for people. */
struct InsideOptions {
    std::string stage;
    int stopFd = -1;
};

CLI::App* addTour(CLI::App& app, TourOptions& options) {
    CLI::App* tour = app.add_subcommand(
            "tour",
            "boot a device, walk through what its cameras do, and end with 0 if all of it"
            " was as expected");
    tour->add_option("DEVICE_DIR", options.deviceDirectory,
                     "directory with a device.yaml (default: " + options.deviceDirectory + ")");
    tour->add_flag("--keep", options.keep, "leave the temporary directory, with the logs, there");
    tour->add_option("--pause", options.pauseSeconds, "seconds to wait after each step")
            ->check(CLI::Range(0, 3600));
    tour->footer("\nExample: camerasim tour --pause 5");
    return tour;
}

CLI::App* addUp(CLI::App& app, UpOptions& options) {
    CLI::App* up = app.add_subcommand(
            "up", "boot a device and stay, with a line for whatever happens, until Ctrl-C");
    up->add_option("DEVICE_DIR", options.deviceDirectory,
                   "directory with a device.yaml (default: " + options.deviceDirectory + ")");
    up->add_flag("--keep", options.keep, "leave the temporary directory, with the logs, there");
    up->add_flag("--restart", options.restart, "start provider processes again when they end");
    up->footer("\nExample: camerasim up simulator/devices/headset --restart");
    return up;
}

void addInsideArguments(CLI::App* command, InsideOptions& inside, std::string& deviceDirectory) {
    command->add_option("STAGE", inside.stage)->required();
    command->add_option("STOP_FD", inside.stopFd)->required();
    command->add_option("DEVICE_DIR", deviceDirectory)->required();
}

}  // namespace

int main(int argc, char** argv) {
    CLI::App app("Boots simulated devices whose cameras are served through the provider library.",
                 "camerasim");
    app.require_subcommand(1);

    TourOptions tourOptions;
    UpOptions upOptions;
    InsideOptions insideOptions;
    tourOptions.deviceDirectory = upOptions.deviceDirectory = Installation::defaultDevice();
    addTour(app, tourOptions);
    CLI::App* up = addUp(app, upOptions);

    CLI::App* inside = app.add_subcommand("inside")->group("")->require_subcommand(1);
    CLI::App* insideTour = inside->add_subcommand("tour");
    insideTour->add_option("--pause", tourOptions.pauseSeconds);
    addInsideArguments(insideTour, insideOptions, tourOptions.deviceDirectory);
    CLI::App* insideUp = inside->add_subcommand("up");
    insideUp->add_flag("--restart", upOptions.restart);
    addInsideArguments(insideUp, insideOptions, upOptions.deviceDirectory);

    Commands commands(app);
    orvo::simulator::addCommands(commands);

    try {
        app.parse(argc, argv);
    } catch (const CLI::Success& help) {
        return app.exit(help);
    } catch (const CLI::ParseError& mistake) {
        std::cerr << "camerasim: " << mistake.what() << "; see camerasim --help\n";
        return kBadUse;
    }
    const std::string& stage = insideOptions.stage;
    if (*insideTour) {
        return orvo::simulator::runTourInside(tourOptions, stage, insideOptions.stopFd);
    }
    if (*insideUp) return orvo::simulator::runUpInside(upOptions, stage, insideOptions.stopFd);
    if (*up) return orvo::simulator::runUp(upOptions);
    const int status = commands.run();
    return status >= 0 ? status : orvo::simulator::runTour(tourOptions);
}
