// SPDX-License-Identifier: Apache-2.0
// A camera provider, or the shim in front of one, that answers what a test wrote down.
#pragma once

#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include <android/hardware/camera/provider/2.4/ICameraProvider.h>

#include "tests/support/CountedInstance.h"

namespace orvo::test {

/** What one operation with a result callback answers. */
template <typename Value>
struct Script {
    android::hardware::camera::common::V1_0::Status status =
            android::hardware::camera::common::V1_0::Status::OK;
    Value value{};
    int answers = 1;              ///< How often the result callback runs.
    bool transportFails = false;  ///< The method returns a dead object failure.
    int calls = 0;                ///< How often the operation was called.
};

/**
 * Scripts are set before the provider is shared; calls and links may come on any thread. Keeps
 * death links as the platform does: the recipient weakly, with the cookie given.
 */
class ScriptedProvider : public android::hardware::camera::provider::V2_4::ICameraProvider,
                         public CountedInstance {
  public:
    using Callback = android::hardware::camera::provider::V2_4::ICameraProviderCallback;
    using Status = android::hardware::camera::common::V1_0::Status;
    using DeviceV1 = android::hardware::camera::device::V1_0::ICameraDevice;
    using DeviceV3 = android::hardware::camera::device::V3_2::ICameraDevice;
    using Recipient = android::hardware::hidl_death_recipient;
    template <typename T>
    using Return = android::hardware::Return<T>;
    template <typename T>
    using sp = android::sp<T>;

    Return<Status> setCallback(const sp<Callback>& callback) override;
    Return<void> getVendorTags(getVendorTags_cb _hidl_cb) override;
    Return<void> getCameraIdList(getCameraIdList_cb _hidl_cb) override;
    Return<void> isSetTorchModeSupported(isSetTorchModeSupported_cb _hidl_cb) override;
    Return<void> getCameraDeviceInterface_V1_x(const android::hardware::hidl_string& name,
                                               getCameraDeviceInterface_V1_x_cb _hidl_cb) override;
    Return<void> getCameraDeviceInterface_V3_x(const android::hardware::hidl_string& name,
                                               getCameraDeviceInterface_V3_x_cb _hidl_cb) override;
    Return<bool> linkToDeath(const sp<Recipient>& recipient, uint64_t cookie) override;
    Return<bool> unlinkToDeath(const sp<Recipient>& recipient) override;

    Script<std::vector<android::hardware::hidl_string>> cameraIds;
    Script<std::vector<android::hardware::camera::common::V1_0::VendorTagSection>> vendorTags;
    Script<bool> torchSupport;
    Script<sp<DeviceV1>> deviceV1;
    Script<sp<DeviceV3>> deviceV3;
    Status setCallbackStatus = Status::OK;
    bool setCallbackFails = false;   ///< In transport.
    bool linkFails = false;          ///< In transport.
    bool linkRefused = false;        ///< The call succeeds and answers false.
    bool unlinkFails = false;        ///< In transport.
    std::function<void()> onLinked;  ///< Runs at the end of a successful linkToDeath.
    /** Runs at the start of every operation, with its name. */
    std::function<void(const std::string& operation)> onCall;

    struct Link {
        android::wp<Recipient> recipient;
        uint64_t cookie;
    };
    std::vector<Link> links() const;
    int unlinkCalls() const;
    /** The callbacks given so far, oldest first. */
    std::vector<sp<Callback>> callbacks() const;
    /** The device names asked for so far, oldest first, with the version as "1 " or "3 ". */
    std::vector<std::string> askedDevices() const;

    /** Tells every recipient that is linked, on the calling thread, and forgets the links. */
    void die();

  private:
    void begin(const char* operation);
    template <typename Value, typename ResultCallback>
    Return<void> play(Script<Value>& script, const ResultCallback& resultCallback);

    mutable std::mutex mMutex;
    std::vector<Link> mLinks;
    int mUnlinkCalls = 0;
    std::vector<sp<Callback>> mCallbacks;
    std::vector<std::string> mAskedDevices;
};

}  // namespace orvo::test
