// SPDX-License-Identifier: Apache-2.0
// The provider object: one camera provider in front of several.
#pragma once

#include <stdint.h>

#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include <android-base/thread_annotations.h>
#include <android/hardware/camera/provider/2.4/ICameraProvider.h>
#include <android/hardware/camera/provider/2.4/ICameraProviderCallback.h>
#include <hidl/HidlSupport.h>
#include <hidl/Status.h>
#include <utils/RefBase.h>

#include "mapper/IProviderMapper.h"
#include "provider/service/ServiceInteractionProxy.h"

namespace android::hardware::camera::provider::V2_4::implementation {

struct DeviceNameParts;

/**
 * Presents the cameras of the underlying providers that the replacement map names for one instance
 * as the cameras of one provider. The framework calls it as ICameraProvider, every underlying
 * provider as ICameraProviderCallback, and the platform as death recipient of each of them, on any
 * HIDL thread, several at once. Whoever holds it must keep it alive while a reconnection runs.
 *
 * Everything is public, for this library's functions and tests; nobody else sees this header.
 */
class OrvoCameraServiceImplementation : public ICameraProvider,
                                        public hidl_death_recipient,
                                        public ICameraProviderCallback {
  public:
    /** One underlying provider. Its address in the set is its death cookie. */
    struct HALDescriptor {
        std::string mName;  ///< Instance name, such as "external/0"; the only ordering key.
        std::string mType;  ///< "external" of "external/0".

        // The connection, replaced with replaceUnlocked(). Mutable, as a set's elements are const.
        mutable sp<ICameraProvider> mProvider;  ///< The service; null while unconnected.
        mutable wp<ICameraProvider> mShim;      ///< Forwards calls to it; owned by its library.

        bool operator<(const HALDescriptor& other) const { return mName < other.mName; }

        /** One descriptor per distinct name. Ends the process on a name without "/". */
        static std::set<HALDescriptor> fromProviderNames(
                const std::vector<std::string>& instanceNames);

        /** The element of that name, or null after logging that there is none. */
        static HALDescriptor* findByName(const std::set<HALDescriptor>& descriptors,
                                         const std::string& instanceName);

        /**
         * The element that serves a device: that of its provider type and the number 0. Null when
         * there is none; ends the process when the name does not parse.
         */
        static HALDescriptor* findProviderForAndroidDevice(
                const std::set<HALDescriptor>& descriptors, const std::string& providerDeviceName);

        /** The shim, or null after logging that there is none "to <purpose> <name>". */
        sp<ICameraProvider> shimTo(const char* purpose) const;
    };

    /**
     * Loads the map and makes the descriptors; contacts no provider. Afterwards mIsValid says
     * whether the object may be used. Ends the process when a name has no "/".
     */
    OrvoCameraServiceImplementation(const char* instanceName,
                                    std::shared_ptr<ServiceInteractionProxy> serviceProxy,
                                    std::shared_ptr<::orvo::camera::IProviderMapper> mapper);
    ~OrvoCameraServiceImplementation() override;

    /** Connects every declared provider that has a descriptor, once. Always true. */
    bool initialize();

    // ICameraProvider. Every result callback runs exactly once, before the method returns.
    Return<common::V1_0::Status> setCallback(const sp<ICameraProviderCallback>& callback) override;
    Return<void> getVendorTags(getVendorTags_cb _hidl_cb) override;
    Return<void> getCameraIdList(getCameraIdList_cb _hidl_cb) override;
    Return<void> isSetTorchModeSupported(isSetTorchModeSupported_cb _hidl_cb) override;
    Return<void> getCameraDeviceInterface_V1_x(const hidl_string& cameraDeviceName,
                                               getCameraDeviceInterface_V1_x_cb _hidl_cb) override;
    Return<void> getCameraDeviceInterface_V3_x(const hidl_string& cameraDeviceName,
                                               getCameraDeviceInterface_V3_x_cb _hidl_cb) override;

    /**
     * Writes the state of the object as text to the first descriptor of `fd`, which may be null,
     * closed or full: what cannot be written at once is dropped. Calls nobody.
     */
    Return<void> debug(const hidl_handle& fd, const hidl_vec<hidl_string>& options) override
            EXCLUDES(mActiveDevicesMutex);

    /** Withdraws a dead provider's cameras and starts its reconnection. `who` is not used. */
    void serviceDied(uint64_t cookie, const wp<::android::hidl::base::V1_0::IBase>& who) override;

    // ICameraProviderCallback: what the underlying providers report, under their device names.
    Return<void> cameraDeviceStatusChange(const hidl_string& cameraDeviceName,
                                          common::V1_0::CameraDeviceStatus newStatus) override;
    Return<void> torchModeStatusChange(const hidl_string& cameraDeviceName,
                                       common::V1_0::TorchModeStatus newStatus) override;

    /**
     * Fetches the service, links to its death and makes its shim. False, after a log line, when one
     * of them fails; the descriptor then has no service. Null `descriptor`: false.
     */
    bool initializeProviderService(const HALDescriptor* descriptor,
                                   const std::string& instanceName);

    /**
     * Forgets every active device of the instance's type and tells the framework that it is gone,
     * without the lock. Returns how many of these notifications the framework accepted.
     */
    size_t removeAndNotifyDevicesByProviderName(const std::string& instanceName)
            EXCLUDES(mActiveDevicesMutex);

    /** The framework's name for a provider's device. Ends the process on an empty name. */
    std::string providerDeviceNameToAndroidDeviceName(const std::string& providerDeviceName);
    /** The same for a name whose parts are known. */
    std::string providerDeviceNameToAndroidDeviceName(const std::string& providerDeviceName,
                                                      const DeviceNameParts& parts);

    /** The provider's name for a framework's device: "" if unknown, itself if malformed. */
    std::string androidDeviceNameToProviderDeviceName(const std::string& androidDeviceName)
            EXCLUDES(mActiveDevicesMutex);

    /** The one fatal exit: says so, waits a second, ends the process with status 1. Any thread. */
    [[noreturn]] static void shutdown();

    bool mIsValid = true;
    std::shared_ptr<::orvo::camera::IProviderMapper> mProviderMapper;
    std::shared_ptr<ServiceInteractionProxy> mServiceProxy;
    /** The framework's. Replaced with replaceUnlocked() by setCallback only; copied to be used. */
    sp<ICameraProviderCallback> mCallback;
    /** No lock: the constructor fixes its membership. Never copied, as addresses are cookies. */
    std::set<HALDescriptor> mHalDescriptors;
    std::string mProviderType;  ///< "legacy" of "legacy/0".
    std::string mProviderName;  ///< The object's own instance name.
    /** Key: framework device name. Value: the name by which its provider reported it. */
    std::map<std::string, std::string> mActiveDevices GUARDED_BY(mActiveDevicesMutex);
    /** Also serialises the edits of the id properties. Never held during a call to outside. */
    std::mutex mActiveDevicesMutex;
};

/**
 * Replaces an sp<> or wp<> that other threads copy without a lock. An assignment releases the old
 * object before it stores the new pointer, so the old one is held until that is done.
 */
template <typename Reference>
void replaceUnlocked(Reference& reference, const Reference& value) {
    const Reference old = reference;
    reference = value;
}

/**
 * What the platform's passthrough loader looks up and calls, on any thread. Returns the provider
 * for `name` with one strong reference taken for the caller, or null.
 */
extern "C" ICameraProvider* HIDL_FETCH_ICameraProvider(const char* name)
        __attribute__((visibility("default")));

}  // namespace android::hardware::camera::provider::V2_4::implementation
