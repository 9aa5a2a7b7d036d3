// SPDX-License-Identifier: Apache-2.0
// HeadsetCheck: all that is wrong with a device directory, and one to start from.

#pragma once

#include <string>
#include <vector>

#include <android-base/result.h>

#include "mapcheck/Providers.h"
#include "simulator/description/ProviderDescription.h"

namespace orvo::simulator {

/**
 * Reads every file of a device directory: device.yaml, the descriptions, the manifest, the map as
 * orvo-mapcheck does, and looks whether they fit together.
 *
 * @return one line for each mistake, with its file and, where there is one, its line; empty if the
 *         device boots with all of its providers.
 */
std::vector<std::string> checkHeadset(const std::string& directory);

/**
 * Writes a small device that boots: a provider with two cameras behind legacy/0. Makes the
 * directory and those above it.
 *
 * @return an error, one line, if the directory is there and not empty, or cannot be written.
 */
android::base::Result<void> makeHeadset(const std::string& directory);

/** Adds what a description says to what a map is checked against. */
void addProvider(const ProviderDescription& description, mapcheck::Providers* providers);

}  // namespace orvo::simulator
