// SPDX-License-Identifier: Apache-2.0
// The C++ face of the interfaces that the camera provider implements and calls.

#include <type_traits>

#include <android/hardware/camera/device/1.0/ICameraDevice.h>
#include <android/hardware/camera/device/1.0/ICameraDeviceCallback.h>
#include <android/hardware/camera/provider/2.4/BpHwCameraProvider.h>
#include <android/hardware/camera/provider/2.4/ICameraProvider.h>
#include <android/hardware/camera/provider/2.4/ICameraProviderCallback.h>
#include <android/hidl/manager/1.0/IServiceNotification.h>
#include <gtest/gtest.h>
#include <hidl/LegacySupport.h>
#include <hidl/Static.h>

namespace {

using namespace android;
using android::hardware::hidl_string;
using android::hardware::hidl_vec;
using android::hardware::Return;
using android::hardware::camera::common::V1_0::CameraDeviceStatus;
using android::hardware::camera::common::V1_0::Status;
using android::hardware::camera::common::V1_0::TorchModeStatus;
using android::hardware::camera::common::V1_0::VendorTagSection;
using android::hardware::camera::device::V1_0::ICameraDeviceCallback;
using OldDevice = android::hardware::camera::device::V1_0::ICameraDevice;
using android::hardware::camera::provider::V2_4::BpHwCameraProvider;
using android::hardware::camera::provider::V2_4::ICameraProvider;
using android::hardware::camera::provider::V2_4::ICameraProviderCallback;
using android::hidl::base::V1_0::IBase;
using android::hidl::manager::V1_0::IServiceNotification;

template <typename Expected, typename Actual>
constexpr bool kSame = std::is_same<Expected, Actual>::value;

static_assert(kSame<Return<Status> (ICameraProvider::*)(const sp<ICameraProviderCallback>&),
                    decltype(&ICameraProvider::setCallback)>,
              "a single enum is the result itself");
static_assert(kSame<ICameraProvider::getVendorTags_cb,
                    std::function<void(Status status, const hidl_vec<VendorTagSection>& sections)>>,
              "several results go to a callback");
static_assert(kSame<Return<void> (ICameraProvider::*)(ICameraProvider::getVendorTags_cb),
                    decltype(&ICameraProvider::getVendorTags)>,
              "a method with a callback has no result");
static_assert(kSame<ICameraProvider::getCameraDeviceInterface_V1_x_cb,
                    std::function<void(Status status, const sp<OldDevice>& device)>>,
              "interfaces are given by strong reference");
static_assert(
        kSame<Return<void> (ICameraProviderCallback::*)(const hidl_string&, CameraDeviceStatus),
              decltype(&ICameraProviderCallback::cameraDeviceStatusChange)>,
        "enums are given by value");
static_assert(kSame<Return<void> (ICameraProviderCallback::*)(const hidl_string&, TorchModeStatus),
                    decltype(&ICameraProviderCallback::torchModeStatusChange)>,
              "enums are given by value");
static_assert(kSame<Return<void> (OldDevice::*)(uint32_t), decltype(&OldDevice::enableMsgType)>,
              "bit fields are numbers");
static_assert(kSame<Return<uint32_t> (ICameraDeviceCallback::*)(const hardware::hidl_handle&,
                                                                uint32_t, uint32_t),
                    decltype(&ICameraDeviceCallback::registerMemory)>,
              "type names of the interface are resolved");
static_assert(kSame<bool (*)(const std::string&, const sp<IServiceNotification>&),
                    decltype(&ICameraProvider::registerForNotifications)>,
              "registerForNotifications");
// A template argument would lose the attribute of the function, of which g++ warns.
[[maybe_unused]] constexpr status_t (ICameraProvider::*kRegister)(const std::string&) =
        &ICameraProvider::registerAsService;
static_assert(kSame<BpHwCameraProvider::Pure, ICameraProvider>, "what a proxy stands for");

TEST(SignatureTest, AnInterfaceAndItsBaseHaveTheSameAddress) {
    struct Callback : public ICameraProviderCallback {
        Return<void> cameraDeviceStatusChange(const hidl_string&, CameraDeviceStatus) override {
            return hardware::Void();
        }
        Return<void> torchModeStatusChange(const hidl_string&, TorchModeStatus) override {
            return hardware::Void();
        }
    };
    const sp<ICameraProviderCallback> callback = new Callback();
    const sp<IBase> base = callback;
    EXPECT_EQ(static_cast<void*>(callback.get()), static_cast<void*>(base.get()));
    EXPECT_EQ(
            "[class or subclass of android.hardware.camera.provider@2.4::ICameraProviderCallback]"
            "@local",
            toString(callback));
}

TEST(SignatureTest, DescriptorsNamePackageVersionAndInterface) {
    EXPECT_STREQ("android.hardware.camera.provider@2.4::ICameraProvider",
                 ICameraProvider::descriptor);
    EXPECT_STREQ("android.hidl.base@1.0::IBase", IBase::descriptor);
}

TEST(SignatureTest, EveryLinkedInterfaceHasItsClassesInTheTables) {
    for (const char* descriptor :
         {ICameraProvider::descriptor, ICameraProviderCallback::descriptor, OldDevice::descriptor,
          IBase::descriptor, IServiceNotification::descriptor}) {
        EXPECT_NE(nullptr, hardware::details::getBnConstructorMap().get(descriptor, nullptr));
        EXPECT_NE(nullptr, hardware::details::getBsConstructorMap().get(descriptor, nullptr));
    }
}

}  // namespace
