// SPDX-License-Identifier: Apache-2.0
// The XML files of a device as the host platform and the simulator read them: its service manifest
// and, apart from the provider library's own reader, its provider map.

#include <string>

#include "VintfManifest.h"
#include "fuzz/support/MemoryFile.h"
#include "fuzz/support/Require.h"
#include "simulator/description/ProviderMap.h"

using orvo::VintfManifest;
using orvo::fuzz::MemoryFile;
using orvo::fuzz::require;
using orvo::simulator::ProviderMap;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static MemoryFile file;
    file.write(data, size);

    const auto map = ProviderMap::read(file.path());
    if (map) {
        (void)map->behind("legacy/0");
    } else {
        const std::string line = map.error().message();
        require(!line.empty() && line.find('\n') == std::string::npos, "one line of error", line);
    }

    VintfManifest manifest;
    if (const auto added = manifest.addFile(file.path()); !added) {
        const std::string line = added.error().message();
        require(!line.empty() && line.find('\n') == std::string::npos, "one line of error", line);
    }
    const std::string provider = "android.hardware.camera.provider@2.4::ICameraProvider";
    for (const std::string& instance : manifest.instancesOf(provider)) {
        require(manifest.transportOf(provider, instance).has_value(),
                "what is declared says how it serves", instance);
    }
    return 0;
}
