// SPDX-License-Identifier: Apache-2.0
// HeadsetDescription: reads device.yaml, then each provider description that it names.

#include "simulator/description/HeadsetDescription.h"

#include <sys/stat.h>
#include <unistd.h>

#include <climits>
#include <cstdlib>
#include <cstring>
#include <set>

#include "simulator/description/DescriptionReader.h"
#include "simulator/description/OneLine.h"
#include "simulator/description/ProviderDescription.h"

namespace orvo::simulator {

using android::base::Error;
using android::base::Result;

namespace {

/** Why it cannot be used as a directory, or 0. */
int mistakeOf(const std::string& path) {
    struct stat info;
    if (stat(path.c_str(), &info) != 0) return errno;
    if (!S_ISDIR(info.st_mode)) return ENOTDIR;
    return access(path.c_str(), R_OK | X_OK) == 0 ? 0 : errno;
}

std::string mayNotBeRead(const std::string& what, const std::string& directory) {
    return "the " + what + " '" + onOneLine(directory) + "' may not be read (" + strerror(EACCES) +
           "); give yourself the right to read it";
}

/** Each description must itself be sound, and no two may claim one instance. */
Result<std::vector<ProviderProgram>> readProviders(DescriptionReader& reader,
                                                   const YAML::Node& root,
                                                   const std::string& directory) {
    std::vector<ProviderProgram> programs;
    std::set<std::string> instances;
    for (const YAML::Node& node : reader.list(root, "providers", "the device", false)) {
        const std::string file = reader.textOf(node, "an entry of providers");
        if (reader.error()) break;
        const std::string path = file[0] == '/' ? file : directory + "/" + file;
        Result<ProviderDescription> provider = ProviderDescription::read(path);
        if (!provider) return provider.error();
        if (!instances.insert(provider->instance).second) {
            reader.fail(node, "'" + file + "' describes " + provider->instance +
                                      ", which another entry describes; leave one of them out");
        }
        programs.push_back({provider->instance, path});
    }
    return programs;
}

}  // namespace

Result<HeadsetDescription> HeadsetDescription::read(const std::string& directory) {
    char absolute[PATH_MAX];
    const bool found = realpath(directory.c_str(), absolute) != nullptr;
    const int mistake = found ? mistakeOf(absolute) : errno;
    if (mistake == EACCES) return Error() << mayNotBeRead("device directory", directory);
    if (mistake != 0) {
        return Error() << "there is no device directory '" << onOneLine(directory)
                       << "'; give a directory that holds a device.yaml";
    }
    HeadsetDescription device;
    device.directory = absolute;
    const int mistakeOfTree = mistakeOf(device.vendorTree());
    if (mistakeOfTree == EACCES) return Error() << mayNotBeRead("vendor tree", device.vendorTree());
    if (mistakeOfTree != 0) {
        return Error() << "the device directory '" << onOneLine(device.directory)
                       << "' has no vendor tree; add a directory 'vendor'";
    }
    DescriptionReader reader(device.directory + "/device.yaml");
    const YAML::Node root = reader.load();
    if (reader.error()) return Error() << *reader.error();
    reader.expectKeys(root, "the device", {"name", "service", "providers", "clearOnRestart"});
    device.name = reader.text(root, "name", "the device");
    for (const YAML::Node& node : reader.list(root, "service", "the device", true)) {
        device.serviceInstances.push_back(reader.textOf(node, "an entry of service"));
    }
    Result<std::vector<ProviderProgram>> providers = readProviders(reader, root, device.directory);
    if (!providers) return providers.error();
    for (const YAML::Node& node : reader.list(root, "clearOnRestart", "the device", false)) {
        device.clearOnRestart.push_back(reader.textOf(node, "an entry of clearOnRestart"));
    }
    if (reader.error()) return Error() << *reader.error();
    device.providers = *providers;
    return device;
}

}  // namespace orvo::simulator
