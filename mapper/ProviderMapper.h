// SPDX-License-Identifier: Apache-2.0
// The replacement map as the device's vendor writes it: an XML file.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "mapper/IProviderMapper.h"

namespace orvo::camera {

/**
 * Reads the replacement map with libxml2. Each child of the root element of the form
 *
 *     <instance replace="external/0">legacy/0</instance>
 *
 * says that the provider in its "replace" attribute stands behind the instance in its text. Both
 * are taken as written: no trimming, no splitting. Several entries with one text add up. Whatever
 * else the document holds is ignored.
 */
class ProviderMapper : public IProviderMapper {
  public:
    bool loadMapFromFile(const char* path) override;
    std::vector<std::string> getReplacementProviderNames(const char* name) override;

    /**
     * Adds the entries of the file at `path` to mProviderMap, and logs them or why it could not.
     * Virtual so that a derived mapper can read another format.
     */
    virtual bool loadXml(const char* path);

    /**
     * Key: an instance name, exactly as in the file. Value: its replacement provider names in file
     * order, repeats kept. Public for derived mappers, which fill it, and for tests.
     */
    std::map<std::string, std::vector<std::string>> mProviderMap;
};

}  // namespace orvo::camera
