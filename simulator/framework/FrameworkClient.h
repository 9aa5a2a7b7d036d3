// SPDX-License-Identifier: Apache-2.0
// FrameworkClient: the camera framework's side of one camera provider service.

#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include <android-base/result.h>

#include <android/hardware/camera/provider/2.4/ICameraProvider.h>

#include "simulator/description/MetadataBuffer.h"
#include "simulator/framework/StatusLog.h"

namespace orvo::simulator {

/** What a provider answered. */
template <typename T>
struct Answer {
    std::string failure;  ///< why the call did not get through, one line; empty if it did
    android::hardware::camera::common::V1_0::Status status{};  ///< meaningful without failure
    T value{};                                                 ///< as sent, whatever the status is

    bool arrived() const { return failure.empty(); }
    bool ok() const {
        return arrived() && status == android::hardware::camera::common::V1_0::Status::OK;
    }
};

/** What a client learns of a camera without opening it. */
struct CameraFacts {
    uint32_t resourceCost;
    std::vector<std::string> conflictingDevices;
    size_t characteristicsBytes;                 ///< 0 for version 1
    std::vector<MetadataEntry> characteristics;  ///< for version 1: empty
    std::string info;  ///< for version 1: facing and orientation; else empty
};

/**
 * Talks to one camera provider as the platform's camera service does.
 *
 * Every call may be made from any thread and returns when the provider has answered or is gone.
 */
class FrameworkClient {
  public:
    using Status = android::hardware::camera::common::V1_0::Status;
    using VendorTagSection = android::hardware::camera::common::V1_0::VendorTagSection;
    using DeviceV1 = android::hardware::camera::device::V1_0::ICameraDevice;
    using Session = android::hardware::camera::device::V3_2::ICameraDeviceSession;
    using DeviceV3 = android::hardware::camera::device::V3_2::ICameraDevice;
    using Provider = android::hardware::camera::provider::V2_4::ICameraProvider;

    /** Finds the service; an error, one line, if it is not registered. Does not wait for it. */
    static android::base::Result<std::unique_ptr<FrameworkClient>> connect(
            const std::string& instance, const android::sp<StatusLog>& log = new StatusLog());
    /** Ends every wait on the log. The log itself stays with the provider, which knows it. */
    ~FrameworkClient();

    /** Registers the log as the provider's callback; notifications may come before it returns. */
    Answer<bool> registerCallback();
    /** What the provider has told so far. Closed when the provider's process dies. */
    const StatusLog& log() const { return *mLog; }

    Answer<std::vector<std::string>> cameraIdList();
    Answer<bool> isTorchSupported();
    Answer<std::vector<VendorTagSection>> vendorTags();
    /**
     * A camera's device interface. An aggregating provider ends its own process when asked for a
     * name that it has never reported PRESENT: ask for names from the log.
     */
    Answer<android::sp<DeviceV1>> deviceV1(const std::string& name);
    Answer<android::sp<DeviceV3>> deviceV3(const std::string& name);
    /** Gets the device interface that the name's version asks for, and reads what it tells. */
    Answer<CameraFacts> readCamera(const std::string& name);

    /** Opens a camera of version 3, which the caller must close. Its results go nowhere. */
    Answer<android::sp<Session>> openSession(const std::string& name);
    Answer<bool> setTorchMode(const std::string& name, bool on);

    /** The text that the provider writes for whoever looks at it; "" if it has none. */
    Answer<std::string> dump();

    const android::sp<Provider>& provider() const { return mProvider; }

  private:
    class Death;

    FrameworkClient(android::sp<Provider> provider, android::sp<StatusLog> log,
                    android::sp<Death> death);
    Answer<CameraFacts> readCameraV1(const std::string& name);
    Answer<CameraFacts> readCameraV3(const std::string& name);

    const android::sp<Provider> mProvider;
    const android::sp<StatusLog> mLog;
    const android::sp<Death> mDeath;
};

}  // namespace orvo::simulator
