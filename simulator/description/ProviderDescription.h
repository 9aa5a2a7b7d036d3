// SPDX-License-Identifier: Apache-2.0
// ProviderDescription: what a simulated camera provider serves, as its YAML description says.

#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <android-base/result.h>

#include <android/hardware/camera/common/1.0/types.h>

namespace orvo::simulator {

enum class Facing { BACK, FRONT, EXTERNAL };

/** One camera. */
struct CameraDescription {
    std::string name;  ///< such as "device@3.2/external/100"
    int majorVersion;  ///< of the device interface: 1 or 3
    Facing facing;     ///< EXTERNAL cameras come and go; the others are built in
    bool present;      ///< at the start
    bool flash;
    uint32_t orientation;                ///< of the sensor, in degrees clockwise: 0, 90, 180 or 270
    uint32_t resourceCost;               ///< 0 to 100
    std::vector<std::string> conflicts;  ///< names of cameras that may not be open with it
    std::vector<uint8_t> characteristics;  ///< a metadata buffer; empty for version 1

    bool builtIn() const { return facing != Facing::EXTERNAL; }
};

/** One provider. */
struct ProviderDescription {
    std::string instance;  ///< such as "external/0"
    bool torchSupported;   ///< the answer of isSetTorchModeSupported
    /**
     * Whether built-in cameras are reported PRESENT to a new listener, which would assume it
     * anyway. A provider behind an aggregating one needs it: that one learns by such reports alone
     * which provider a camera belongs to.
     */
    bool reportsBuiltIn;
    std::vector<android::hardware::camera::common::V1_0::VendorTagSection> vendorTags;
    std::vector<CameraDescription> cameras;

    /**
     * Reads a description.
     *
     * @return the description, or one line that names the file and the line in it, says what is
     *         wrong and what to write instead.
     */
    static android::base::Result<ProviderDescription> read(const std::string& file);
    /** The same with all that is wrong added to `mistakes`, one such line each. */
    static ProviderDescription read(const std::string& file, std::vector<std::string>* mistakes);
};

}  // namespace orvo::simulator
