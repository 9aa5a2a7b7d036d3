// SPDX-License-Identifier: Apache-2.0
// The question that the provider object asks of its configuration: who stands behind an instance.
#pragma once

#include <string>
#include <vector>

namespace orvo::camera {

/**
 * Answers which underlying providers an aggregating provider instance fronts. Filled and asked by
 * one thread, so it needs no lock. Names are NUL-terminated and never null.
 */
class IProviderMapper {
  public:
    /**
     * Reads the replacement map from the file at `path`, forgetting whatever was read before.
     * False when there is no usable file; what the map holds then is unspecified.
     */
    virtual bool loadMapFromFile(const char* path) = 0;

    /**
     * The instance names of the providers behind `name` (such as "legacy/0"), in the order of the
     * file, repeats included. Empty when the map does not mention `name`.
     */
    virtual std::vector<std::string> getReplacementProviderNames(const char* name) = 0;

    virtual ~IProviderMapper() = default;
};

}  // namespace orvo::camera
