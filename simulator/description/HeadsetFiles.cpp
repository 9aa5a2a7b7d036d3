// SPDX-License-Identifier: Apache-2.0
// HeadsetFiles: one list out of three files.

#include "simulator/description/HeadsetFiles.h"

#include <unistd.h>

#include <algorithm>

#include <android-base/strings.h>

#include <VintfManifest.h>

namespace orvo::simulator {

using android::base::Error;
using android::base::Result;
using android::base::unexpected;

namespace {

constexpr char kCameraProvider[] = "android.hardware.camera.provider@2.4::ICameraProvider";

bool contains(const std::vector<std::string>& all, const std::string& one) {
    return std::find(all.begin(), all.end(), one) != all.end();
}

}  // namespace

Result<HeadsetFiles> HeadsetFiles::read(const HeadsetDescription& description) {
    HeadsetFiles files;
    files.mDescription = description;
    orvo::VintfManifest manifest;
    const auto added = manifest.addDirectory(description.vendorTree() + "/etc/vintf");
    if (!added) return unexpected(added.error());
    const std::vector<std::string> declared = manifest.instancesOf(kCameraProvider);
    files.mDeclared = {declared.begin(), declared.end()};
    const std::string mapFile = description.vendorTree() + "/etc/orvo_vendor_manifest.xml";
    if (access(mapFile.c_str(), F_OK) == 0) {
        auto map = ProviderMap::read(mapFile);
        if (!map) return unexpected(map.error());
        files.mMap = *map;
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
                   << android::base::Join(mInstances, ", ");
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

bool HeadsetFiles::hasOthersBehind(const std::string& instance) const {
    return !mMap.behind(instance).empty();
}

}  // namespace orvo::simulator
