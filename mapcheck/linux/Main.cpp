// SPDX-License-Identifier: Apache-2.0
// orvo-mapcheck on Linux: it also reads the descriptions of simulated providers.

#include "mapcheck/MapCheck.h"
#include "simulator/description/HeadsetCheck.h"

namespace {

orvo::mapcheck::OptionError readDescription(const std::string& file,
                                            orvo::mapcheck::Providers* providers) {
    const auto description = orvo::simulator::ProviderDescription::read(file);
    if (!description.ok()) return description.error().message();
    orvo::simulator::addProvider(*description, providers);
    return std::nullopt;
}

}  // namespace

int main(int argc, char** argv) {
    return orvo::mapcheck::checkMaps(argc, argv, readDescription);
}
