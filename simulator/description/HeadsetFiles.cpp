// SPDX-License-Identifier: Apache-2.0
// HeadsetFiles: one list out of three files.

#include "simulator/description/HeadsetFiles.h"

#include <unistd.h>

#include <algorithm>

#include <android-base/strings.h>

#include "host/vintf/VintfManifest.h"
#include "simulator/description/Suggestions.h"

namespace orvo::simulator {

using android::base::Error;
using android::base::Result;

namespace {

bool contains(const std::vector<std::string>& all, const std::string& one) {
    return std::find(all.begin(), all.end(), one) != all.end();
}

/** The library serves names that begin with the MR provider's without a look at the map. */
bool asksTheMap(const HeadsetDescription& description) {
    const auto& served = description.serviceInstances;
    return !std::all_of(served.begin(), served.end(), isMrInstance);
}

}  // namespace

bool isMrInstance(const std::string& instance) {
    return android::base::StartsWith(instance, kMrInstance);
}

Result<HeadsetFiles> HeadsetFiles::read(const HeadsetDescription& description) {
    HeadsetFiles files;
    files.mDescription = description;
    orvo::VintfManifest manifest;
    const auto mistakes = manifest.addDirectory(description.vendorTree() + "/etc/vintf");
    if (!mistakes.empty()) return Error() << mistakes.front().toText();
    const std::vector<std::string> declared = manifest.instancesOf(kCameraProvider);
    files.mDeclared = {declared.begin(), declared.end()};
    const std::string mapFile = description.vendorTree() + "/etc/orvo_vendor_manifest.xml";
    if (asksTheMap(description) || access(mapFile.c_str(), F_OK) == 0) {
        files.mMap = ProviderMap::read(mapFile);
    }
    for (const std::string& instance : description.serviceInstances) files.addInstance(instance);
    for (const ProviderProgram& program : description.providers) {
        files.addInstance(program.instance);
    }
    for (const auto& [front, behind] : files.mMap.entries()) files.addInstance(behind);
    for (const std::string& instance : declared) files.addInstance(instance);
    return files;
}

void HeadsetFiles::addInstance(const std::string& instance) {
    if (!contains(mInstances, instance)) mInstances.push_back(instance);
}

Result<void> HeadsetFiles::checkKnown(const std::string& instance) const {
    if (contains(mInstances, instance)) return {};
    return Error() << "there is no provider '" << instance << "'; there are "
                   << someOf(mInstances, instance);
}

bool HeadsetFiles::isServed(const std::string& instance) const {
    return contains(mDescription.serviceInstances, instance);
}

bool HeadsetFiles::isDescribed(const std::string& instance) const {
    const auto same = [&](const ProviderProgram& one) { return one.instance == instance; };
    return std::any_of(mDescription.providers.begin(), mDescription.providers.end(), same);
}

std::string HeadsetFiles::behind(const std::string& instance) const {
    for (const auto& [front, behind] : mMap.entries()) {
        if (behind == instance) return front;
    }
    return "";
}

}  // namespace orvo::simulator
