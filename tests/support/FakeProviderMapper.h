// SPDX-License-Identifier: Apache-2.0
// A replacement map that a test fills by hand.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "mapper/IProviderMapper.h"
#include "tests/support/CountedInstance.h"

namespace orvo::test {

/** Answers from its fields and records what it was asked. One thread. */
class FakeProviderMapper : public camera::IProviderMapper, public CountedInstance {
  public:
    ~FakeProviderMapper() override {
        if (onDestroyed) onDestroyed();
    }

    bool loadMapFromFile(const char* path) override {
        loadedPaths.push_back(path);
        return loadSucceeds;
    }

    std::vector<std::string> getReplacementProviderNames(const char* name) override {
        askedNames.push_back(name);
        return replacements[name];
    }

    bool loadSucceeds = true;
    std::map<std::string, std::vector<std::string>> replacements;  // Key: instance name.
    std::function<void()> onDestroyed;

    std::vector<std::string> loadedPaths;
    std::vector<std::string> askedNames;
};

}  // namespace orvo::test
