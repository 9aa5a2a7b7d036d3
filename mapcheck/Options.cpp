// SPDX-License-Identifier: Apache-2.0
// Reads the options with getopt_long, which exists wherever the checker is built.

#include "mapcheck/Options.h"

#include <getopt.h>

#include <vector>

namespace orvo::mapcheck {
namespace {

constexpr char kSeeHelp[] = "; see --help";

enum Choice { MANIFEST = 'm', DEVICES = 'd', DESCRIPTION = 'D', FORMAT = 'f', HELP = 'h' };

// Such as "external/0=device@3.2/external/100,device@3.2/external/101".
OptionError addDevices(const std::string& text, Providers* providers) {
    const size_t equals = text.find('=');
    if (equals == std::string::npos || equals == 0) {
        return "--devices takes INSTANCE=NAME[,NAME...], not \"" + text + "\"";
    }
    std::vector<std::string>& names = (*providers)[text.substr(0, equals)].devices;
    size_t start = equals + 1;
    while (true) {
        const size_t comma = text.find(',', start);
        const std::string name = text.substr(start, comma - start);
        if (name.empty()) {
            return "there is an empty device name in \"" + text +
                   "\"; write one such as "
                   "device@3.2/external/100";
        }
        names.push_back(name);
        if (comma == std::string::npos) return std::nullopt;
        start = comma + 1;
    }
}

OptionError setFormat(const std::string& text, Options* options) {
    options->json = text == "json";
    if (options->json || text == "text") return std::nullopt;
    return "--format is text or json, not \"" + text + "\"";
}

OptionError apply(int choice, const char* word, DescriptionReader readDescription,
                  Options* options) {
    switch (choice) {
        case HELP:
            options->help = true;
            return std::nullopt;
        case MANIFEST:
            options->manifests.emplace_back(optarg);
            return std::nullopt;
        case DEVICES:
            return addDevices(optarg, &options->providers);
        case FORMAT:
            return setFormat(optarg, options);
        case ':':
            return std::string(word) + " needs a value";
        case DESCRIPTION:
            if (readDescription != nullptr) return readDescription(optarg, &options->providers);
            [[fallthrough]];
        default:
            return std::string(word) + " is not an option, or takes no value";
    }
}

}  // namespace

OptionError parseOptions(int argc, char** argv, DescriptionReader readDescription,
                         Options* options) {
    std::vector<option> known = {{"manifest", required_argument, nullptr, MANIFEST},
                                 {"devices", required_argument, nullptr, DEVICES},
                                 {"format", required_argument, nullptr, FORMAT},
                                 {"help", no_argument, nullptr, HELP}};
    if (readDescription != nullptr) {
        known.push_back({"description", required_argument, nullptr, DESCRIPTION});
    }
    known.push_back({nullptr, 0, nullptr, 0});

    opterr = 0;
    int choice;
    while ((choice = getopt_long(argc, argv, ":h", known.data(), nullptr)) != -1) {
        const OptionError error = apply(choice, argv[optind - 1], readDescription, options);
        if (!error) continue;
        // A description's error says it all.
        return choice == DESCRIPTION ? error : *error + kSeeHelp;
    }
    options->files.assign(argv + optind, argv + argc);
    if (!options->files.empty() || options->help) return std::nullopt;
    return std::string("name at least one map file") + kSeeHelp;
}

std::string helpText(bool hasDescriptions) {
    std::string text =
            R"(usage: orvo-mapcheck FILE... [--manifest FILE]... [--devices INSTANCE=NAME[,NAME...]]...
)";
    if (hasDescriptions) text += "                     [--description FILE]...";
    text += hasDescriptions ? " [--format=text|json]\n"
                            : "                     [--format=text|json]\n";
    text += R"(
Says, line by line, what a device would not do with a provider map that the map seems to ask for.

  FILE                a provider map, which a device has as /vendor/etc/orvo_vendor_manifest.xml
  --manifest FILE     a device manifest, or a fragment of one; all of them together tell which
                      instances there are
  --devices I=N,...   the cameras that the provider I reports, such as
                      external/0=device@3.2/external/100,device@3.2/external/101
)";
    if (hasDescriptions) {
        text += R"(  --description FILE  the same, and its vendor tags, from the YAML description of a simulated
                      provider
)";
    }
    text += R"(  --format=json       an array of {file, line, severity, code, message} instead of lines
  -h, --help          this

An error is what ends the service, or loses an entry, a provider or a camera; a warning is what
works, but not as the file looks. The exit status is 0 if there is neither, 1 if there is one, and
2 if a file cannot be read or is not XML, or if the command line is wrong.

examples:
  orvo-mapcheck orvo_vendor_manifest.xml
  orvo-mapcheck map.xml --manifest vintf/manifest.xml --manifest vintf/manifest/camera.xml
  orvo-mapcheck map.xml --devices external/0=device@3.2/external/7 \
                        --devices virtual/0=device@3.2/virtual/7
)";
    if (hasDescriptions) {
        text += R"(  orvo-mapcheck map.xml --description providers/external.yaml --format=json
)";
    }
    return text;
}

}  // namespace orvo::mapcheck
