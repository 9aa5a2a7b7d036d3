// SPDX-License-Identifier: Apache-2.0
// The command line of orvo-mapcheck.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "mapcheck/Providers.h"

namespace orvo::mapcheck {

/** What is wrong with the command line, on one line; nothing if it is right. */
using OptionError = std::optional<std::string>;

/**
 * Adds what a description file of a simulated provider says to `providers`. The error names the
 * file.
 */
using DescriptionReader = OptionError (*)(const std::string& file, Providers* providers);

struct Options {
    bool help = false;
    bool json = false;
    std::vector<std::string> files;
    std::vector<std::string> manifests;
    Providers providers;
};

/**
 * Reads the command line, and the descriptions that it names. An error says what to do about it.
 * `readDescription` is null where there are no descriptions; then there is no such option either.
 * Uses the state of getopt: one thread, once.
 */
OptionError parseOptions(int argc, char** argv, DescriptionReader readDescription,
                         Options* options);

/** What --help prints. */
std::string helpText(bool hasDescriptions);

}  // namespace orvo::mapcheck
