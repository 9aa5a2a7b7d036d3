// SPDX-License-Identifier: Apache-2.0
// HeadsetFinder: knows headsets by the names of their directories and by who accepts there.

#include "simulator/camerasim/commands/HeadsetFinder.h"

#include <fnmatch.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <system_error>

#include "simulator/camerasim/Looks.h"
#include "simulator/camerasim/outside/Janitor.h"
#include "simulator/camerasim/outside/Stage.h"
#include "simulator/control/ControlClient.h"

namespace orvo::simulator {

namespace fs = std::filesystem;
using android::base::Result;

namespace {

constexpr char kNone[] = "no device is running; start one with: camerasim up";

/** For a line about several devices, one that does not answer is not waited for long. */
constexpr std::chrono::seconds kShortPatience{3};

bool isOurDirectory(const std::string& path) {
    struct stat status {};
    return lstat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode) &&
           status.st_uid == geteuid();
}

std::string canonical(const std::string& path) {
    std::error_code failure;
    const fs::path found = fs::canonical(path, failure);
    return failure ? "" : found.string();
}

FoundHeadset askWhoItIs(const std::string& root) {
    const auto state = ask(root, StateRequest(), kShortPatience);
    if (!state) return {root, std::nullopt, state.error().message()};
    return {root, *state, ""};
}

bool fits(const FoundHeadset& headset, const std::string& wanted) {
    if (!headset.state) return false;
    const std::string directory = canonical(wanted);
    return headset.state->name == wanted ||
           (!directory.empty() && canonical(headset.state->directory) == directory);
}

/** "headset (/tmp/camerasim.Ab12Cd), ...". */
std::string describe(const std::vector<FoundHeadset>& headsets) {
    std::vector<std::string> texts;
    texts.reserve(headsets.size());
    for (const FoundHeadset& headset : headsets) {
        texts.push_back((headset.state ? headset.state->name : "a device that does not answer") +
                        " (" + headset.root + ")");
    }
    return listed(texts, "none");
}

Result<std::string> chooseByState(const std::vector<std::string>& roots,
                                  const std::string& wanted) {
    const std::vector<FoundHeadset> all = runningHeadsets();
    std::vector<FoundHeadset> fitting;
    for (const FoundHeadset& headset : all) {
        if (fits(headset, wanted)) fitting.push_back(headset);
    }
    if (fitting.size() == 1) return fitting[0].root;
    if (roots.empty()) return badUse(kNone);
    if (fitting.empty()) {
        return badUse("no device '" + wanted + "' is running; there is " + describe(all));
    }
    return badUse("several devices fit '" + wanted +
                  "'; give --device the directory of one: " + describe(fitting));
}

}  // namespace

std::vector<std::string> runningRoots() {
    std::string pattern = kDirectoryPattern;
    std::replace(pattern.begin(), pattern.end(), 'X', '?');
    std::vector<std::string> roots;
    std::error_code failure;
    const std::string parent = canonical(directoryOfDirectories());
    for (fs::directory_iterator it(parent, failure), end; !failure && it != end;
         it.increment(failure)) {
        const std::string root = it->path();
        if (fnmatch(pattern.c_str(), it->path().filename().c_str(), 0) != 0) continue;
        if (isOurDirectory(root) && ControlClient::connect(root)) roots.push_back(root);
    }
    std::sort(roots.begin(), roots.end());
    return roots;
}

std::vector<FoundHeadset> runningHeadsets() {
    std::vector<FoundHeadset> headsets;
    for (const std::string& root : runningRoots()) headsets.push_back(askWhoItIs(root));
    return headsets;
}

Result<std::string> chooseHeadset(const std::string& wanted) {
    const std::vector<std::string> roots = runningRoots();
    if (wanted.empty()) {
        if (roots.size() == 1) return roots[0];
        if (roots.empty()) return badUse(kNone);
        return badUse("several devices run; say which with --device: " +
                      describe(runningHeadsets()));
    }
    const std::string asRoot = canonical(wanted);
    if (std::find(roots.begin(), roots.end(), asRoot) != roots.end()) return asRoot;
    return chooseByState(roots, wanted);
}

Result<std::string> chooseHeadsetOrRemains(const std::string& wanted) {
    const std::string asRoot = canonical(wanted);
    std::error_code none;
    // A name is no directory; the machine's own /run/log is none of a device's.
    if (!asRoot.empty() && fs::is_directory(Stage(asRoot).logs(), none)) return asRoot;
    return chooseHeadset(wanted);
}

}  // namespace orvo::simulator
