// SPDX-License-Identifier: Apache-2.0
// Compares cameras by the names and ids that the library gives them towards the framework.

#include "mapcheck/CameraChecks.h"

#include <stdlib.h>

#include "mapcheck/NameChecks.h"
#include "provider/naming/DeviceInfo.h"

namespace orvo::mapcheck {

namespace naming = ::android::hardware::camera::provider::V2_4::implementation;

void CameraChecks::add(const MapEntry& entry, const std::vector<std::string>& names) {
    const std::string type = typeOf(entry.key);
    for (const std::string& name : names) {
        if (!checkDeviceName(entry, name, mFindings)) continue;
        naming::DeviceInfo info;
        naming::parseDeviceString(name, info);
        addCamera({&entry, name, strtoul(info.version.c_str(), nullptr, 10)},
                  info.prefix + "@" + info.version + "/" + type + "/" + info.id, info.id);
    }
}

void CameraChecks::addCamera(const Camera& camera, const std::string& frameworkName,
                             const std::string& id) {
    const auto [sameId, isNewId] = mById.try_emplace(id, camera);
    const auto [sameVersion, isNewVersion] =
            mByVersionAndId.try_emplace(std::to_string(camera.major) + "/" + id, camera);
    const auto [sameName, isNewName] =
            mByName[camera.entry->key].try_emplace(frameworkName, camera);
    if (!isNewName) {
        const Camera& first = sameName->second;
        if (first.entry != camera.entry || first.name != camera.name) {
            reportSameName(first, camera, frameworkName);
        } else if (sameId->second.entry == camera.entry) {
            // Where another entry has the id, too, that was said, and this about a provider's
            // first.
            reportRepeated(camera);
        }
        return;
    }
    if (isNewId) return;
    // A provider may offer one camera in several major versions.
    if (sameId->second.entry != camera.entry) {
        reportSameId(sameId->second, camera, id);
    } else if (!isNewVersion) {
        reportSameId(sameVersion->second, camera, id);
    }
}

void CameraChecks::reportRepeated(const Camera& camera) {
    mFindings->warning(
            camera.entry->line, "device-repeated",
            quoted(camera.entry->value) + " has " + escaped(camera.name) +
                    " twice: it is one camera to the framework, and its id is twice in " +
                    "the property that lists the ids; leave one of the two out");
}

void CameraChecks::reportSameName(const Camera& first, const Camera& second,
                                  const std::string& name) {
    mFindings->error(second.entry->line, "device-collision",
                     escaped(first.name) + " and " + escaped(second.name) + " are both " +
                             escaped(name) + " to the framework: only the one that is reported " +
                             "last can be opened; give one of them another id");
    mFindings->note(first.entry->line, "the provider of " + escaped(first.name));
}

void CameraChecks::reportSameId(const Camera& first, const Camera& second, const std::string& id) {
    const bool isSameProvider =
            first.entry->value == second.entry->value && first.name == second.name;
    const std::string what = isSameProvider ? escaped(first.name) + " is behind " +
                                                      quoted(first.entry->key) + " and " +
                                                      quoted(second.entry->key)
                                            : escaped(first.name) + " and " + escaped(second.name) +
                                                      " both have the id " + quoted(id);
    mFindings->error(second.entry->line, "id-collision",
                     what + ": the framework has one camera of an id, so one of the two is lost; " +
                             (isSameProvider ? "put the provider behind one instance only"
                                             : "give one of them another id"));
    mFindings->note(first.entry->line, "the provider of " + escaped(first.name));
}

}  // namespace orvo::mapcheck
