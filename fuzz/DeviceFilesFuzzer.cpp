// SPDX-License-Identifier: Apache-2.0
// The XML files of a device as the host platform and the simulator read them: its service manifest
// and its provider map.

#include <algorithm>
#include <string>
#include <vector>

#include "fuzz/support/MemoryFile.h"
#include "fuzz/support/Require.h"
#include "host/vintf/VintfManifest.h"
#include "simulator/description/ProviderMap.h"

using orvo::VintfManifest;
using orvo::fuzz::MemoryFile;
using orvo::fuzz::require;
using orvo::simulator::ProviderMap;

namespace {

void requireOneLine(const std::string& line) {
    require(!line.empty() && line.find('\n') == std::string::npos, "one line", line);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static MemoryFile file;
    file.write(data, size);

    const ProviderMap map = ProviderMap::read(file.path());
    for (const std::string& line : map.warnings()) requireOneLine(line);
    for (const auto& [instance, behind] : map.entries()) {
        const std::vector<std::string> names = map.behind(instance);
        require(std::find(names.begin(), names.end(), behind) != names.end(),
                "what the map puts behind an instance is there", behind);
    }

    VintfManifest manifest;
    for (const auto& mistake : manifest.addFile(file.path())) requireOneLine(mistake.toText());
    const std::string provider = "android.hardware.camera.provider@2.4::ICameraProvider";
    for (const std::string& instance : manifest.instancesOf(provider)) {
        require(manifest.transportOf(provider, instance).has_value(),
                "what is declared says how it serves", instance);
    }
    return 0;
}
