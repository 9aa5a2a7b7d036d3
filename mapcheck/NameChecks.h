// SPDX-License-Identifier: Apache-2.0
// What can be said about one entry from its two names alone.
#pragma once

#include <string>

#include "mapcheck/Finding.h"
#include "mapcheck/MapFile.h"

namespace orvo::mapcheck {

/** The part of an instance name before its first "/"; all of it where there is none. */
std::string typeOf(const std::string& instance);

/** True for a name with a "/" and without the blanks, commas and the like that no instance has. */
bool isPlainName(const std::string& name);

/** True for the MR provider, which the library serves without looking into the map. */
bool isMRInstance(const std::string& name);

/** True when the library looks the key up in the map once the service is started for it. */
bool isAskedFor(const std::string& key);

/** Checks the form of the key. True when nothing was found. */
bool checkKey(const MapEntry& entry, Findings* findings);

/** Checks the form of the value. True when nothing was found. */
bool checkValue(const MapEntry& entry, Findings* findings);

/** Checks the name of a camera of the entry's provider. True when the framework takes it. */
bool checkDeviceName(const MapEntry& entry, const std::string& name, Findings* findings);

}  // namespace orvo::mapcheck
