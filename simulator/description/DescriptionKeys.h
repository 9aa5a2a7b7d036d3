// SPDX-License-Identifier: Apache-2.0
// DescriptionKeys: what the descriptions of a device may say, for those who read and who write
// them.

#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace orvo::simulator {

/** One key of a map in a description. */
struct DescriptionKey {
    const char* name;
    std::string form;      ///< how its value is written, for a person
    const char* fallback;  ///< the value where it is left out; null if it must be there
    const char* sentence;  ///< what it means, for a person
    int64_t low = 0;       ///< of a number
    int64_t high = 0;
    std::vector<std::string> choices;  ///< of a word
};

/** The keys of one kind of map, in the order in which they are best written. */
struct DescriptionTable {
    const char* title;  ///< for a person
    const char* where;
    std::vector<DescriptionKey> keys;

    /** The key of that name, which must be one of these. */
    const DescriptionKey& key(const std::string& name) const;
};

const DescriptionTable& headsetKeys();
const DescriptionTable& providerKeys();
const DescriptionTable& cameraKeys();
const DescriptionTable& characteristicKeys();
const DescriptionTable& vendorTagSectionKeys();
const DescriptionTable& vendorTagKeys();

/** All of them as a page in Markdown. */
std::string descriptionKeysPage();

}  // namespace orvo::simulator
