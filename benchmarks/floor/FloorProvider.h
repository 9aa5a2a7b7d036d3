// SPDX-License-Identifier: Apache-2.0
// The least that a camera provider in front of several can do: what the library is measured by.
#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include <android/hardware/camera/provider/2.4/ICameraProvider.h>
#include <android/hardware/camera/provider/2.4/ICameraProviderCallback.h>

namespace orvo::benchmarks {

using android::sp;
using android::wp;
using android::hardware::hidl_death_recipient;
using android::hardware::hidl_string;
using android::hardware::hidl_vec;
using android::hardware::Return;
using android::hardware::Void;
using android::hardware::camera::provider::V2_4::ICameraProvider;
using android::hardware::camera::provider::V2_4::ICameraProviderCallback;
namespace common = android::hardware::camera::common;

/** Key: instance name. Value: its replacements. */
using FloorMap = std::map<std::string, std::vector<std::string>>;

/** The way to the service manager. */
struct FloorServices {
    hidl_vec<hidl_string> declared() const;
    sp<ICameraProvider> find(const std::string& instance) const;
};

/**
 * Does for well-behaved providers and well-formed names what the library does for all: the same
 * calls in the same order, the same log lines, the same answers, the same properties. It shares no
 * code with the library. Every cost that an operation can avoid is avoided here; what a floor does
 * nevertheless, and why, stands at each operation.
 */
class FloorProvider : public ICameraProvider,
                      public hidl_death_recipient,
                      public ICameraProviderCallback {
  public:
    using CameraDeviceStatus = common::V1_0::CameraDeviceStatus;
    using TorchModeStatus = common::V1_0::TorchModeStatus;
    using IBase = android::hidl::base::V1_0::IBase;

    /** A provider and its shim. Key of the map: instance name. */
    struct Connection {
        sp<ICameraProvider> service;
        wp<ICameraProvider> shim;
    };
    using Connections = std::map<std::string, Connection, std::less<>>;

    /** The floor of the entry point: everything up to the object that is handed out. */
    static ICameraProvider* fetch(const char* name);

    Return<common::V1_0::Status> setCallback(const sp<ICameraProviderCallback>& callback) override;
    Return<void> getVendorTags(getVendorTags_cb _hidl_cb) override;
    Return<void> getCameraIdList(getCameraIdList_cb _hidl_cb) override;
    Return<void> isSetTorchModeSupported(isSetTorchModeSupported_cb _hidl_cb) override;
    Return<void> getCameraDeviceInterface_V1_x(const hidl_string& name,
                                               getCameraDeviceInterface_V1_x_cb _hidl_cb) override;
    Return<void> getCameraDeviceInterface_V3_x(const hidl_string& name,
                                               getCameraDeviceInterface_V3_x_cb _hidl_cb) override;
    void serviceDied(uint64_t cookie, const wp<IBase>& who) override;
    Return<void> cameraDeviceStatusChange(const hidl_string& name,
                                          CameraDeviceStatus status) override;
    Return<void> torchModeStatusChange(const hidl_string& name, TorchModeStatus status) override;

    /** Key: framework device name. Value: the name by which its provider reported it. */
    std::map<std::string, std::string> mActiveDevices;

  private:
    bool connect(Connections::value_type& connection);
    void reconnect(Connections::value_type& connection);
    size_t withdraw(std::string_view type);
    sp<ICameraProvider> shimFor(std::string_view providerName, const std::string** instance);
    std::string providerNameOf(const hidl_string& frameworkName);
    std::string frameworkNameOf(const std::string& providerName) const;

    std::shared_ptr<FloorMap> mMap;
    std::shared_ptr<FloorServices> mServices;
    std::string mName;
    std::string mType;
    sp<ICameraProviderCallback> mCallback;
    Connections mConnections;
    std::mutex mMutex;
};

/** The parts of a device name, in place. */
struct NameParts {
    explicit NameParts(std::string_view name);

    std::string_view prefix, version, type, id;
};

/** Adds `id`, which ends with a NUL, to the ids of `type`; or takes it away. */
void appendIdAtFloor(std::string_view type, std::string_view id);
void removeIdAtFloor(std::string_view type, std::string_view id);

/** The floor of loading a map file. */
bool loadMapAtFloor(const char* path, FloorMap& map);

/** xmlParseMemory and a walk that takes out both strings of each entry, and nothing else. */
size_t walkMapFile(const char* path);

}  // namespace orvo::benchmarks
