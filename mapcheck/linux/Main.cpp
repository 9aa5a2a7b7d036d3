// SPDX-License-Identifier: Apache-2.0
// orvo-mapcheck on Linux: it also reads the descriptions of simulated providers.

#include "mapcheck/MapCheck.h"
#include "simulator/description/ProviderDescription.h"

namespace {

orvo::mapcheck::OptionError readDescription(const std::string& file,
                                            orvo::mapcheck::Providers* providers) {
    const auto description = orvo::simulator::ProviderDescription::read(file);
    if (!description.ok()) return description.error().message();
    orvo::mapcheck::Provider& provider = (*providers)[description->instance];
    for (const auto& camera : description->cameras) provider.devices.push_back(camera.name);
    for (const auto& section : description->vendorTags) {
        for (const auto& tag : section.tags) {
            provider.vendorTags.push_back(
                    {tag.tagId, std::string(section.sectionName) + "." + std::string(tag.tagName)});
        }
    }
    return std::nullopt;
}

}  // namespace

int main(int argc, char** argv) {
    return orvo::mapcheck::checkMaps(argc, argv, readDescription);
}
