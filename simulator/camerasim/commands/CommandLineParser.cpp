// SPDX-License-Identifier: Apache-2.0
// CommandLineParser: the only source that parses a command line; the library's headers take a
// compiler longer than all that is here.

#include "simulator/camerasim/commands/CommandLineParser.h"

#include <iostream>
#include <map>
#include <string>

#include <android-base/parsedouble.h>
#include <android-base/parseint.h>
#include <CLI/CLI.hpp>

#include "simulator/camerasim/commands/Command.h"
#include "simulator/camerasim/inside/Inside.h"
#include "simulator/control/Complaint.h"
#include "simulator/description/OneLine.h"
#include "simulator/description/Suggestions.h"

namespace orvo::simulator {

namespace {

constexpr double kLongestSeconds = 24 * 3600;
constexpr int kMostWords = 4;

/** Error of a word that is no whole number from 1; "" if it is one. */
std::string mistakeInNumber(const std::string& word) {
    int64_t number = 0;
    if (android::base::ParseInt<int64_t>(word, &number, 1)) return "";
    return "'" + onOneLine(word) + "' is no whole number of 1 or more";
}

/** Error of what is in any range, for it is no number; "" otherwise. */
std::string mistakeInSeconds(const std::string& word) {
    double seconds = 0;
    if (android::base::ParseDouble(word.c_str(), &seconds) && seconds >= 0) return "";
    return "'" + onOneLine(word) + "' is no number of seconds";
}

/** Where the words of one command are put. */
using Parsed = std::map<std::string, Words>;

void addArgument(CLI::App& parser, const Argument& argument, Parsed& parsed) {
    Words& words = parsed[argument.key()];
    if (argument.kind == Argument::Kind::FLAG) {
        parser.add_flag_callback(
                argument.name, [&words] { words = {"yes"}; }, argument.sentence);
        return;
    }
    CLI::Option* option =
            argument.kind == Argument::Kind::WORDS
                    ? parser.add_option(argument.name, words, argument.sentence)
                    : parser.add_option_function<std::string>(
                              argument.name, [&words](const std::string& word) { words = {word}; },
                              argument.sentence);
    if (!argument.type.empty()) option->type_name(argument.type);
    if (!argument.choices.empty()) option->check(CLI::IsMember(argument.choices));
    switch (argument.kind) {
        case Argument::Kind::WORD:
            option->required();
            break;
        case Argument::Kind::WORDS:
            option->required()->expected(1, kMostWords);
            break;
        case Argument::Kind::NUMBER:
            option->check(
                    CLI::Validator([](std::string& word) { return mistakeInNumber(word); }, ""));
            break;
        case Argument::Kind::SECONDS:
            option->check(CLI::Range(0.0, kLongestSeconds).description(""));
            option->check(
                    CLI::Validator([](std::string& word) { return mistakeInSeconds(word); }, ""));
            break;
        default:
            break;
    }
}

void addInside(CLI::App& program, InsideOptions& options) {
    // What the program runs of itself inside a headset's namespace; not for people.
    CLI::App* inside = program.add_subcommand("inside")->group("");
    inside->add_flag("--restart", options.restart);
    inside->add_flag("--quiet", options.quiet);
    inside->add_option("ROOT", options.root)->required();
    inside->add_option("STOP_FD", options.stopFd)->required();
    inside->add_option("SOCKET_FD", options.socketFd)->required();
    inside->add_option("DEVICE_DIR", options.directory)->required();
}

/** The first word is no command. */
int refuseCommand(const std::string& word) {
    Words names;
    for (const Command& command : commandTable()) names.push_back(command.name);
    return complain(badUse("there is no command '" + word + "'; there are " + someOf(names, word) +
                           "; see camerasim --help"));
}

int printCompletions(int argc, char** argv) {
    for (const std::string& word : completionsOf(Words(argv + 2, argv + argc))) {
        std::cout << word << "\n";
    }
    return kAsExpected;
}

}  // namespace

int runCommandLine(int argc, char** argv) {
    // Whatever words a shell completes, they are none of this program's own.
    const std::string first = argc > 1 ? argv[1] : "";
    if (first == "names") return printCompletions(argc, argv);

    CLI::App program(
            "Boots simulated devices whose cameras are served through the provider library.",
            "camerasim");
    program.require_subcommand(1);
    program.set_version_flag("--version", "camerasim " ORVO_VERSION);
    InsideOptions insideOptions;
    addInside(program, insideOptions);
    std::map<const CLI::App*, std::pair<const Command*, Parsed>> parsers;
    for (const Command& command : commandTable()) {
        CLI::App* parser = program.add_subcommand(command.name, command.sentence);
        parser->footer("\nExample: " + command.example);
        auto& [row, parsed] = parsers[parser];
        row = &command;
        for (const Argument& argument : command.arguments) addArgument(*parser, argument, parsed);
    }
    const bool isWord = !first.empty() && first[0] != '-';
    if (first == "help") {
        std::cout << program.help();
        return kAsExpected;
    }
    if (isWord && first != "inside" && findCommand(first) == nullptr) return refuseCommand(first);
    try {
        program.parse(argc, argv);
    } catch (const CLI::Success& help) {
        return program.exit(help);
    } catch (const CLI::ParseError& mistake) {
        return complain(badUse(mistake.what() + std::string("; see camerasim --help")));
    }
    const CLI::App* typed = program.get_subcommands()[0];
    const auto found = parsers.find(typed);
    if (found == parsers.end()) return runInside(insideOptions);
    Values values;
    for (auto& [key, words] : found->second.second) values.set(key, std::move(words));
    return found->second.first->run(values);
}

}  // namespace orvo::simulator
