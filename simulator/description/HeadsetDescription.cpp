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

/** What is wrong with the directory itself, or "". */
std::string mistakeOfDirectory(const std::string& directory, char* absolute) {
    const bool found = realpath(directory.c_str(), absolute) != nullptr;
    const int mistake = found ? mistakeOf(absolute) : errno;
    if (mistake == EACCES) return mayNotBeRead("device directory", directory);
    if (mistake == 0) return "";
    return "there is no device directory '" + onOneLine(directory) +
           "'; give a directory that holds a device.yaml";
}

std::string mistakeOfVendorTree(const HeadsetDescription& device) {
    const int mistake = mistakeOf(device.vendorTree());
    if (mistake == EACCES) return mayNotBeRead("vendor tree", device.vendorTree());
    if (mistake == 0) return "";
    return "the device directory '" + onOneLine(device.directory) +
           "' has no vendor tree; add a directory 'vendor'";
}

std::vector<std::string> textsOf(DescriptionReader& reader, const DescribedMap& map,
                                 const char* key) {
    std::vector<std::string> texts;
    for (const YAML::Node& node : map.list(key)) {
        texts.push_back(reader.textOf(node, std::string("an entry of ") + key));
    }
    return texts;
}

/** Each description must itself be sound, and no two may claim one instance. */
std::vector<ProviderProgram> readProviders(DescriptionReader& reader, const DescribedMap& map,
                                           const std::string& directory,
                                           std::vector<std::string>* mistakes) {
    std::vector<ProviderProgram> programs;
    std::set<std::string> instances;
    for (const YAML::Node& node : map.list("providers")) {
        const std::string file = reader.textOf(node, "an entry of providers");
        if (file.empty()) continue;
        const std::string path = file[0] == '/' ? file : directory + "/" + file;
        const std::string instance = ProviderDescription::read(path, mistakes).instance;
        if (instance.empty()) continue;
        if (!instances.insert(instance).second) {
            reader.fail(node, "'" + file + "' describes " + instance +
                                      ", which another entry describes; leave one of them out");
        }
        programs.push_back({instance, path});
    }
    return programs;
}

}  // namespace

Result<HeadsetDescription> HeadsetDescription::read(const std::string& directory) {
    std::vector<std::string> mistakes;
    HeadsetDescription device = read(directory, &mistakes);
    if (!mistakes.empty()) return Error() << mistakes.front();
    return device;
}

HeadsetDescription HeadsetDescription::read(const std::string& directory,
                                            std::vector<std::string>* mistakes) {
    HeadsetDescription device;
    char absolute[PATH_MAX];
    const std::string missing = mistakeOfDirectory(directory, absolute);
    if (!missing.empty()) {
        mistakes->push_back(missing);
        return device;
    }
    device.directory = absolute;
    const std::string treeMissing = mistakeOfVendorTree(device);
    if (!treeMissing.empty()) mistakes->push_back(treeMissing);

    DescriptionReader reader(device.directory + "/device.yaml");
    const DescribedMap map(reader, reader.load(), "the device", headsetKeys());
    device.name = map.text("name");
    device.serviceInstances = textsOf(reader, map, "service");
    device.clearOnRestart = textsOf(reader, map, "clearOnRestart");
    std::vector<std::string> ofProviders;
    device.providers = readProviders(reader, map, device.directory, &ofProviders);
    for (const std::string& mistake : reader.mistakes()) mistakes->push_back(mistake);
    mistakes->insert(mistakes->end(), ofProviders.begin(), ofProviders.end());
    return device;
}

}  // namespace orvo::simulator
