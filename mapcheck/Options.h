// SPDX-License-Identifier: Apache-2.0
// The command line of orvo-mapcheck.
#pragma once

#include <string>
#include <vector>

#include "mapcheck/Providers.h"

namespace orvo::mapcheck {

/**
 * Adds what a description file of a simulated provider says to `providers`. On failure false, and
 * `error` is one line that names the file.
 */
using DescriptionReader = bool (*)(const std::string& file, Providers* providers,
                                   std::string* error);

struct Options {
    bool help = false;
    bool json = false;
    std::vector<std::string> files;
    std::vector<std::string> manifests;
    Providers providers;
};

/**
 * Reads the command line, and the descriptions that it names. False when it is wrong, with what to
 * do about it in `error`. `readDescription` is null where there are no descriptions; then there is
 * no such option either. Uses the state of getopt: one thread, once.
 */
bool parseOptions(int argc, char** argv, DescriptionReader readDescription, Options* options,
                  std::string* error);

/** What --help prints. */
std::string helpText(bool hasDescriptions);

}  // namespace orvo::mapcheck
