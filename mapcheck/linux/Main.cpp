// SPDX-License-Identifier: Apache-2.0
// orvo-mapcheck on Linux: it also reads the descriptions of simulated providers.

#include "mapcheck/MapCheck.h"
#include "simulator/description/ProviderDescription.h"

namespace {

bool readDescription(const std::string& file, orvo::mapcheck::Devices* devices,
                     std::string* error) {
    const auto description = orvo::simulator::ProviderDescription::read(file);
    if (!description.ok()) {
        *error = description.error().message();
        return false;
    }
    std::vector<std::string>& names = (*devices)[description->instance];
    for (const auto& camera : description->cameras) names.push_back(camera.name);
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    return orvo::mapcheck::checkMaps(argc, argv, readDescription);
}
