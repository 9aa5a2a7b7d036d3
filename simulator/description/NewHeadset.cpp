// SPDX-License-Identifier: Apache-2.0
// NewHeadset: the files of a small device, to start from.

#include <filesystem>
#include <system_error>

#include <android-base/file.h>

#include "simulator/description/HeadsetCheck.h"

namespace orvo::simulator {

namespace fs = std::filesystem;
using android::base::ErrnoError;
using android::base::Error;
using android::base::Result;

namespace {

struct File {
    const char* name;
    const char* content;
};

constexpr File kFiles[] = {
        {"device.yaml", R"(# A device with one camera provider behind an aggregating one.

name: small
service: [legacy/0]
providers: [providers/external.yaml]
)"},
        {"providers/external.yaml",
         R"(# One camera that is built in, and one that is plugged in later.

instance: external/0
reportsBuiltIn: true

cameras:
  - name: device@3.2/external/100
    facing: BACK
    flash: true
    resourceCost: 40
  - name: device@3.2/external/usb-1
    facing: EXTERNAL
    present: false
    resourceCost: 40
)"},
        {"vendor/etc/orvo_vendor_manifest.xml", R"(<?xml version="1.0" encoding="UTF-8"?>
<!-- legacy/0 stands in front of these providers. The text of an element is its key: no blanks. -->
<providers>
    <instance replace="external/0">legacy/0</instance>
</providers>
)"},
        {"vendor/etc/vintf/manifest.xml", R"(<?xml version="1.0" encoding="UTF-8"?>
<!-- What this device declares; a provider that is not named here is never looked for. -->
<manifest version="1.0" type="device" target-level="4">
    <hal format="hidl">
        <name>android.hardware.camera.provider</name>
        <transport>hwbinder</transport>
        <fqname>@2.4::ICameraProvider/external/0</fqname>
        <fqname>@2.4::ICameraProvider/legacy/0</fqname>
    </hal>
    <hal format="hidl">
        <!-- By this camerasim plugs the cameras of a provider process. -->
        <name>vendor.orvo.simulator</name>
        <transport>hwbinder</transport>
        <fqname>@1.0::ISimulatedProvider/external/0</fqname>
    </hal>
</manifest>
)"},
};

}  // namespace

Result<void> makeHeadset(const std::string& directory) {
    std::error_code failure;
    if (fs::exists(directory, failure) &&
        !(fs::is_directory(directory, failure) && fs::is_empty(directory, failure))) {
        return Error() << "'" << directory << "' is there and not empty; name a new directory";
    }
    for (const File& file : kFiles) {
        const fs::path path = fs::path(directory) / file.name;
        fs::create_directories(path.parent_path(), failure);
        if (failure) {
            return Error() << "cannot make '" << path.parent_path().string() << "' ("
                           << failure.message() << ")";
        }
        if (!android::base::WriteStringToFile(file.content, path)) {
            return ErrnoError() << "cannot write '" << path.string() << "'";
        }
    }
    return {};
}

}  // namespace orvo::simulator
