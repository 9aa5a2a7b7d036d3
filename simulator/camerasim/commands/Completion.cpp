// SPDX-License-Identifier: Apache-2.0
// Completion: what a shell offers, from the table of commands and from the headset that runs.

#include <chrono>

#include "simulator/camerasim/commands/Command.h"
#include "simulator/camerasim/commands/HeadsetFinder.h"
#include "simulator/control/ControlClient.h"

namespace orvo::simulator {

namespace {

/** Words that ask the shell to offer names of files itself. */
constexpr char kFiles[] = ":files";
constexpr char kDirectories[] = ":directories";

/** What has been typed before the word that is completed. */
struct Typed {
    const Command* command = nullptr;
    Words words;                       ///< that are no options, after the command
    std::string headset;               ///< value of --device
    const Argument* option = nullptr;  ///< whose value the word is
};

const Argument* findOption(const Command* command, const std::string& word) {
    if (command == nullptr) return nullptr;
    for (const Argument& argument : command->arguments) {
        const std::string names = "," + argument.name + ",";
        if (argument.isOption() && names.find("," + word + ",") != std::string::npos) {
            return &argument;
        }
    }
    return nullptr;
}

Typed parse(const Words& words) {
    Typed typed;
    for (size_t i = 0; i + 1 < words.size(); i++) {
        const std::string& word = words[i];
        if (typed.option != nullptr) {
            if (typed.option->name == "--device") typed.headset = word;
            typed.option = nullptr;
        } else if (word.rfind("--device=", 0) == 0) {
            typed.headset = word.substr(word.find('=') + 1);
        } else if (word.rfind('-', 0) == 0) {
            typed.option = findOption(typed.command, word);
            if (typed.option != nullptr && typed.option->kind == Argument::Kind::FLAG) {
                typed.option = nullptr;
            }
        } else if (typed.command == nullptr) {
            typed.command = findCommand(word);
            if (typed.command == nullptr) return typed;
        } else {
            typed.words.push_back(word);
        }
    }
    return typed;
}

/** The state of the headset; one without anything if it does not answer at once. */
HeadsetState stateOf(const std::string& headset) {
    // A shell that completes must neither be written to nor be kept waiting.
    const auto root = chooseHeadset(headset);
    if (!root) return {};
    return ask(*root, StateRequest(), std::chrono::seconds(2)).value_or(HeadsetState());
}

Words providers(const HeadsetState& state) {
    Words names;
    for (const ProviderState& provider : state.providers) names.push_back(provider.instance);
    return names;
}

Words cameras(const HeadsetState& state) {
    Words names;
    for (const CameraState& camera : state.cameras) names.push_back(camera.name);
    return names;
}

Words camerasOf(const HeadsetState& state, const std::string& instance) {
    Words names;
    for (const ProviderState& provider : state.providers) {
        if (provider.instance != instance) continue;
        for (const CameraOfProvider& camera : provider.devices) names.push_back(camera.name);
    }
    return names;
}

Words headsets() {
    Words names = {kDirectories};
    for (const FoundHeadset& headset : runningHeadsets()) {
        if (headset.state) names.push_back(headset.state->name);
    }
    return names;
}

/** The next word of a condition. */
Words conditionWords(const Typed& typed) {
    const Words& before = typed.words;
    if (before.empty()) return {"camera", "provider", "property", "cameras"};
    const std::string& kind = before[0];
    if (before.size() == 1 && kind == "camera") return cameras(stateOf(typed.headset));
    if (before.size() == 1 && kind == "provider") return providers(stateOf(typed.headset));
    if (before.size() != 2) return {};
    if (kind == "camera") return {"PRESENT", "NOT_PRESENT"};
    if (kind == "provider") return {"connected", "disconnected", "running", "dead"};
    return kind == "property" ? Words{"is", "contains"} : Words();
}

Words valuesOf(const Argument& argument, const Typed& typed) {
    if (!argument.choices.empty()) return argument.choices;
    switch (argument.completion) {
        case Argument::Completion::NONE:
            return {};
        case Argument::Completion::CAMERAS:
            return cameras(stateOf(typed.headset));
        case Argument::Completion::PROVIDERS:
            return providers(stateOf(typed.headset));
        case Argument::Completion::PROCESSES: {
            Words names = providers(stateOf(typed.headset));
            names.emplace_back("service");
            return names;
        }
        case Argument::Completion::SERVICES:
            return stateOf(typed.headset).service.instances;
        case Argument::Completion::CAMERAS_OF_PROVIDER:
            return camerasOf(stateOf(typed.headset), typed.words[0]);
        case Argument::Completion::HEADSETS:
            return headsets();
        case Argument::Completion::FILES:
            return {kFiles};
        case Argument::Completion::DIRECTORIES:
            return {kDirectories};
        case Argument::Completion::CONDITION:
            return conditionWords(typed);
    }
    return {};
}

Words optionsOf(const Command& command) {
    Words names = {"-h", "--help"};
    for (const Argument& argument : command.arguments) {
        if (!argument.isOption()) continue;
        const size_t comma = argument.name.find(',');
        if (comma != std::string::npos) names.push_back(argument.name.substr(0, comma));
        names.push_back(argument.key());
    }
    return names;
}

/** What may stand at the place after the words that have been typed. */
Words nextWord(const Typed& typed) {
    size_t place = 0;
    for (const Argument& argument : typed.command->arguments) {
        if (argument.isOption()) continue;
        if (place++ == typed.words.size() || argument.kind == Argument::Kind::WORDS) {
            return valuesOf(argument, typed);
        }
    }
    return {};
}

}  // namespace

Words completionsOf(const Words& words) {
    const std::string current = words.empty() ? "" : words.back();
    const Typed typed = parse(words);
    if (typed.option != nullptr) return valuesOf(*typed.option, typed);
    if (typed.command == nullptr) {
        Words names;
        if (words.size() > 1) return names;
        for (const Command& command : commandTable()) names.push_back(command.name);
        return names;
    }
    const size_t equals = current.find('=');
    if (current.rfind("--", 0) == 0 && equals != std::string::npos) {
        const Argument* option = findOption(typed.command, current.substr(0, equals));
        return option == nullptr ? Words() : valuesOf(*option, typed);
    }
    return current.rfind('-', 0) == 0 ? optionsOf(*typed.command) : nextWord(typed);
}

}  // namespace orvo::simulator
