// SPDX-License-Identifier: Apache-2.0
// Commands: the list of them, and what their help has in common.

#include "simulator/camerasim/commands/Commands.h"

#include <utility>

#include <CLI/CLI.hpp>
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

Parameters& Parameters::argument(const std::string& name, std::string& value,
                                 const std::string& sentence, const Words& choices) {
    CLI::Option* argument = mParser->add_option(name, value, sentence)->required();
    if (!choices.empty()) argument->check(CLI::IsMember(choices));
    return *this;
}

Parameters& Parameters::optionalArgument(const std::string& name, std::string& value,
                                         const std::string& sentence) {
    mParser->add_option(name, value, sentence);
    return *this;
}

Parameters& Parameters::arguments(const std::string& name, Words& value, size_t most,
                                  const std::string& sentence) {
    mParser->add_option(name, value, sentence)->required()->expected(1, static_cast<int>(most));
    return *this;
}

Parameters& Parameters::flag(const std::string& names, bool& value, const std::string& sentence) {
    mParser->add_flag(names, value, sentence);
    return *this;
}

Parameters& Parameters::option(const std::string& names, std::string& value,
                               const std::string& type, const std::string& sentence,
                               const Words& choices) {
    CLI::Option* option = mParser->add_option(names, value, sentence)->type_name(type);
    if (!choices.empty()) option->check(CLI::IsMember(choices));
    return *this;
}

Parameters& Parameters::option(const std::string& names, int64_t& value, const std::string& type,
                               const std::string& sentence) {
    mParser->add_option(names, value, sentence)->type_name(type)->check(CLI::PositiveNumber);
    return *this;
}

Parameters& Parameters::seconds(const std::string& names, double& value, double most,
                                const std::string& sentence) {
    mParser->add_option(names, value, sentence)->type_name("S")->check(CLI::Range(0.0, most));
    return *this;
}

Parameters& Parameters::device(DeviceOptions& options) {
    return option("--device", options.device, "DEVICE",
                  "the device, if several run: its name, its description's directory, or its"
                  " temporary directory");
}

Parameters& Parameters::format(DeviceOptions& options) {
    return option("--format", options.format, "FORMAT", "table (for people) or json (for programs)",
                  {"table", "json"});
}

Parameters Commands::add(const CommandText& text, Body body) {
    CLI::App* parser = mProgram.add_subcommand(text.name, text.sentence);
    parser->footer("\nExample: " + text.example);
    mCommands.push_back({parser, std::move(body)});
    return Parameters(parser);
}

Parameters Commands::addHidden(const CommandText& text, Body body) {
    const Parameters parameters = add(text, std::move(body));
    mCommands.back().parser->group("");
    return parameters;
}

int Commands::run() const {
    for (const Command& command : mCommands) {
        if (command.parser->parsed()) return runBody(command.body);
    }
    return -1;
}

std::vector<std::string> Commands::names() const {
    const CLI::App& program = mProgram;
    std::vector<std::string> names;
    const auto isShown = [](const CLI::App* command) { return !command->get_group().empty(); };
    for (const CLI::App* command : program.get_subcommands(isShown)) {
        names.push_back(command->get_name());
    }
    return names;
}

std::vector<std::string> Commands::optionsOf(const std::string& command) const {
    std::vector<std::string> options;
    const CLI::App& program = mProgram;
    const auto found = program.get_subcommands(
            [&](const CLI::App* parser) { return parser->get_name() == command; });
    if (found.empty()) return options;
    for (const CLI::Option* option : found[0]->get_options()) {
        for (const std::string& name : option->get_lnames()) options.push_back("--" + name);
        for (const std::string& name : option->get_snames()) options.push_back("-" + name);
    }
    return options;
}

void addCommands(Commands& commands) {
    addDevices(commands);
    addPs(commands);
    addCameras(commands);
    addTags(commands);
    addDump(commands);
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
