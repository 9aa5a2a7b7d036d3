// SPDX-License-Identifier: Apache-2.0
// A provider's description: any bytes give a provider that keeps its promises, or one line that
// names the file and says what is wrong.

#include <set>
#include <string>

#include "fuzz/support/MemoryFile.h"
#include "fuzz/support/Require.h"
#include "simulator/description/MetadataBuffer.h"
#include "simulator/description/ProviderDescription.h"

using orvo::fuzz::MemoryFile;
using orvo::fuzz::require;
using orvo::simulator::CameraDescription;
using orvo::simulator::ProviderDescription;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static MemoryFile file;
    file.write(data, size);
    const auto provider = ProviderDescription::read(file.path());
    if (!provider) {
        const std::string error = provider.error().message();
        require(error.compare(0, file.path().size() + 1, file.path() + ":") == 0 &&
                        error.find('\n') == std::string::npos,
                "one line of error that begins with the file", error);
        return 0;
    }

    const size_t slash = provider->instance.find('/');
    require(slash != 0 && slash < provider->instance.size() - 1, "an instance has two parts");
    std::set<std::string> names;
    for (const CameraDescription& camera : provider->cameras) {
        require(names.insert(camera.name).second, "names are unique", camera.name);
        require(camera.majorVersion == 1 || camera.majorVersion == 3, "there are two versions");
        require(camera.orientation < 360 && camera.orientation % 90 == 0, "orientations");
        require(camera.resourceCost <= 100, "costs");
        if (camera.majorVersion == 1) continue;
        const auto entries = orvo::simulator::unpackMetadata(camera.characteristics.data(),
                                                             camera.characteristics.size());
        require(entries.has_value(), "the characteristics are metadata", camera.name);
        for (const auto& entry : *entries) require(!entry.toText().empty(), "values show");
    }
    return 0;
}
