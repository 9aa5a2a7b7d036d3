// SPDX-License-Identifier: Apache-2.0
// The planted faults: operations as somebody could have written them.

#include "tests/interleavings/Faults.h"

#include <pthread.h>

#include <mutex>
#include <utility>

namespace orvo::interleavings {

using android::sp;
using android::hardware::hidl_string;
using android::hardware::Return;
using android::hardware::Void;
using android::hardware::camera::common::V1_0::CameraDeviceStatus;
using android::hardware::camera::common::V1_0::Status;
using android::hardware::camera::common::V1_0::TorchModeStatus;
using android::hardware::camera::provider::V2_4::implementation::OrvoCameraServiceImplementation;
using android::hardware::camera::provider::V2_4::implementation::ServiceInteractionProxy;

Fault gFault = Fault::kNone;

namespace {

class FaultyObject : public OrvoCameraServiceImplementation {
  public:
    using OrvoCameraServiceImplementation::OrvoCameraServiceImplementation;

    Return<void> cameraDeviceStatusChange(const hidl_string& device,
                                          CameraDeviceStatus status) override {
        const std::string name = providerDeviceNameToAndroidDeviceName(device);
        if (gFault == Fault::kLockHeldDuringCall) {
            const std::lock_guard<std::mutex> lock(mActiveDevicesMutex);
            mActiveDevices[name] = device;
            return mCallback->cameraDeviceStatusChange(name, status);
        }
        if (gFault == Fault::kToldBeforeRecorded) {
            mCallback->cameraDeviceStatusChange(name, status).isOk();
            const std::lock_guard<std::mutex> lock(mActiveDevicesMutex);
            if (status == CameraDeviceStatus::PRESENT) mActiveDevices[name] = device;
            if (status == CameraDeviceStatus::NOT_PRESENT) mActiveDevices.erase(name);
            return Void();
        }
        if (gFault == Fault::kLockTakenTwice) {
            const std::lock_guard<std::mutex> lock(mActiveDevicesMutex);
            androidDeviceNameToProviderDeviceName(name);
        }
        return OrvoCameraServiceImplementation::cameraDeviceStatusChange(device, status);
    }

    Return<void> torchModeStatusChange(const hidl_string& device, TorchModeStatus on) override {
        if (gFault == Fault::kReferenceDropped) {
            ICameraProviderCallback* const bare = mCallback.get();
            return bare->torchModeStatusChange(providerDeviceNameToAndroidDeviceName(device), on);
        }
        return OrvoCameraServiceImplementation::torchModeStatusChange(device, on);
    }

    void serviceDied(uint64_t cookie,
                     const android::wp<android::hidl::base::V1_0::IBase>& who) override {
        if (gFault != Fault::kThreadNotDetached) {
            return OrvoCameraServiceImplementation::serviceDied(cookie, who);
        }
        pthread_t thread;
        pthread_create(
                &thread, nullptr, [](void*) -> void* { return nullptr; }, nullptr);
    }

    Return<void> getVendorTags(getVendorTags_cb _hidl_cb) override {
        if (gFault == Fault::kServiceNotHeld) {
            ICameraProvider* const bare = mHalDescriptors.begin()->mProvider.get();
            if (bare != nullptr) return bare->getVendorTags(_hidl_cb);
        }
        return OrvoCameraServiceImplementation::getVendorTags(_hidl_cb);
    }

    Return<void> isSetTorchModeSupported(isSetTorchModeSupported_cb _hidl_cb) override {
        if (gFault == Fault::kReadUnexpectedly) {
            _hidl_cb(Status::OK, mCallback == nullptr);
            return Void();
        }
        if (gFault == Fault::kAnsweredTwice) _hidl_cb(Status::OK, true);
        return OrvoCameraServiceImplementation::isSetTorchModeSupported(_hidl_cb);
    }
};

}  // namespace

sp<OrvoCameraServiceImplementation> makeObject(
        const char* name, std::shared_ptr<ServiceInteractionProxy> proxy,
        std::shared_ptr<orvo::camera::IProviderMapper> mapper) {
    if (gFault == Fault::kNone) {
        return new OrvoCameraServiceImplementation(name, std::move(proxy), std::move(mapper));
    }
    return new FaultyObject(name, std::move(proxy), std::move(mapper));
}

}  // namespace orvo::interleavings
