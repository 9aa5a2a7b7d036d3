// SPDX-License-Identifier: Apache-2.0
// device.yaml: any bytes give a device or one line that says what is wrong.

#include <string>

#include "fuzz/support/Require.h"
#include "fuzz/support/Surroundings.h"
#include "simulator/description/HeadsetDescription.h"

using orvo::fuzz::FreshDirectory;
using orvo::fuzz::require;
using orvo::simulator::HeadsetDescription;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const FreshDirectory directory;
    [[maybe_unused]] static const bool prepared = [] {
        const std::string sound =
                "instance: a/0\n"
                "cameras: [{name: device@1.0/a/0, facing: BACK, resourceCost: 1}]\n";
        directory.write("vendor/empty", "", 0);
        directory.write("a.yaml", sound.data(), sound.size());
        directory.write("broken.yaml", "instance", 8);
        return true;
    }();

    directory.write("device.yaml", data, size);
    const auto device = HeadsetDescription::read(directory.path());
    if (!device) {
        const std::string error = device.error().message();
        require(!error.empty() && error.find('\n') == std::string::npos, "one line of error",
                error);
        return 0;
    }
    require(!device->name.empty() && !device->serviceInstances.empty(), "a device is complete");
    for (const auto& provider : device->providers) {
        require(provider.instance == "a/0", "the provider is the one of its file");
    }
    return 0;
}
