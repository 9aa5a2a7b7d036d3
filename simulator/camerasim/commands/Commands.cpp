// SPDX-License-Identifier: Apache-2.0
// Commands: the list of them, and what their help has in common.

#include "simulator/camerasim/commands/Commands.h"

#include <utility>

#include <nlohmann/json.hpp>

#include "simulator/camerasim/commands/Complaint.h"

namespace orvo::simulator {

namespace {

/** The JSON library throws at an answer that lacks what it should have. */
int runBody(const Commands::Body& body) {
    try {
        return body();
    } catch (const nlohmann::json::exception& mismatch) {
        return complain(didNotHappen(std::string("the device's answer is not as expected; use the"
                                                 " camerasim that booted it (") +
                                     mismatch.what() + ")"));
    }
}

}  // namespace

CLI::App* Commands::add(const CommandText& text, Body body) {
    CLI::App* parser = mProgram.add_subcommand(text.name, text.sentence);
    parser->footer("\nExample: " + text.example);
    mCommands.push_back({parser, std::move(body)});
    return parser;
}

int Commands::run() const {
    for (const Command& command : mCommands) {
        if (command.parser->parsed()) return runBody(command.body);
    }
    return -1;
}

void addDeviceOption(CLI::App* command, DeviceOptions& options) {
    command->add_option("--device", options.device,
                        "the device, if several run: its name, its description's directory, or"
                        " its temporary directory")
            ->type_name("DEVICE");
}

void addFormatOption(CLI::App* command, DeviceOptions& options) {
    command->add_option("--format", options.format, "table (for people) or json (for programs)")
            ->type_name("FORMAT")
            ->check(CLI::IsMember({"table", "json"}));
}

void addCommands(Commands& commands) {
    addDevices(commands);
    addPs(commands);
    addCameras(commands);
    addTags(commands);
    addProps(commands);
    addLog(commands);
    addEvents(commands);
    addWatch(commands);
    addOpenAndClose(commands);
    addKillHangAndStart(commands);
    addPlugAndUnplug(commands);
    addTorch(commands);
    addWait(commands);
    addBugreport(commands);
    addStop(commands);
    addNames(commands);
}

}  // namespace orvo::simulator
