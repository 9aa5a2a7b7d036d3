// SPDX-License-Identifier: Apache-2.0
// ProviderMap: which providers a device's map file puts behind an aggregating one.

#pragma once

#include <string>
#include <utility>
#include <vector>

namespace orvo::simulator {

/**
 * The map file of a device directory as the provider library's own reader takes it: what a device
 * would boot with, mistakes included.
 */
class ProviderMap {
  public:
    /** Prints nothing. A file that the reader refuses makes an empty map, with a warning. */
    static ProviderMap read(const std::string& file);

    /** The names behind the instance, sorted, each once: the order in which they are asked. */
    std::vector<std::string> behind(const std::string& instance) const;

    /** Every entry, sorted by instance: the instance, what stands behind it. */
    const std::vector<std::pair<std::string, std::string>>& entries() const { return mEntries; }

    /** What the reader complained of: "<file>:<line>: <why>; the reader says '<log line>'". */
    const std::vector<std::string>& warnings() const { return mWarnings; }

  private:
    std::vector<std::pair<std::string, std::string>> mEntries;  ///< instance, what replaces it
    std::vector<std::string> mWarnings;
};

}  // namespace orvo::simulator
