// SPDX-License-Identifier: Apache-2.0
// ProviderMap: which providers a device's map file puts behind an aggregating one.

#pragma once

#include <string>
#include <utility>
#include <vector>

#include <android-base/result.h>

namespace orvo::simulator {

/**
 * The map file of a device directory, as a person wrote it.
 *
 * Read here apart from the provider library's own reader, so that what the library makes of the
 * file can be compared with it.
 */
class ProviderMap {
  public:
    /** An error, one line, if the file is missing or malformed or an entry lacks its attribute. */
    static android::base::Result<ProviderMap> read(const std::string& file);

    /** The names behind the instance, sorted, each once: the order in which they are asked. */
    std::vector<std::string> behind(const std::string& instance) const;

    /** Every entry in the order of the file: the instance, what stands behind it. */
    const std::vector<std::pair<std::string, std::string>>& entries() const { return mEntries; }

  private:
    std::vector<std::pair<std::string, std::string>> mEntries;  ///< instance, what replaces it
};

}  // namespace orvo::simulator
