// SPDX-License-Identifier: Apache-2.0
// Makes the floor's provider and connects it.

#include "benchmarks/floor/FloorProvider.h"

#include <string.h>

#include <android/hidl/manager/1.2/IServiceManager.h>
#include <android/log.h>
#include <hidl/ServiceManagement.h>

#include "benchmarks/floor/FloorLog.h"

extern "C" android::hardware::camera::provider::V2_4::ICameraProvider*
HIDL_FETCH_ICameraProvider_shim(
        const char* name, android::hardware::camera::provider::V2_4::ICameraProvider* provider);

namespace orvo::benchmarks {

using common::V1_0::Status;

// Unavoidable: the file, the lines, one node for each provider, the queries and look-ups, a link
// and a shim for each, and the object itself. The map and the way to the service manager are
// objects in shared ownership, and the map's answer is a list of its own, by their interfaces.
ICameraProvider* FloorProvider::fetch(const char* name) {
    __android_log_print(ANDROID_LOG_ERROR, kTag, "HIDL_FETCH_ICameraProvider %s", name);
    auto* const made = new FloorProvider;
    const sp<FloorProvider> held = made;
    made->mName = name;
    made->mType.assign(name, strchr(name, '/') - name);
    made->mMap = std::make_shared<FloorMap>();
    made->mServices = std::make_shared<FloorServices>();
    if (!loadMapAtFloor("/vendor/etc/orvo_vendor_manifest.xml", *made->mMap)) return nullptr;

    __android_log_print(ANDROID_LOG_INFO, kTag, "Get replacement provider for %s", name);
    std::vector<std::string> replacements = (*made->mMap)[name];
    for (std::string& replacement : replacements) {
        made->mConnections.try_emplace(std::move(replacement));
    }
    for (const auto& [instance, connection] : made->mConnections) {
        __android_log_print(ANDROID_LOG_INFO, kTag, "Replacement provider %s for %s",
                            instance.c_str(), name);
    }

    for (const hidl_string& service : made->mServices->declared()) {
        __android_log_print(ANDROID_LOG_INFO, kTag, "Loading service %s", service.c_str());
        const auto found = made->mConnections.find(std::string_view(service.c_str()));
        if (found == made->mConnections.end()) continue;
        __android_log_print(ANDROID_LOG_INFO, kTag, "Found replacement provider %s for %s",
                            service.c_str(), name);
        made->connect(*found);
    }
    made->incStrong(made);
    __android_log_print(ANDROID_LOG_INFO, kTag, "Returning implementation %p for %s\n", made, name);
    return made;
}

hidl_vec<hidl_string> FloorServices::declared() const {
    hidl_vec<hidl_string> names;
    const Return<void> listed =
            android::hardware::defaultServiceManager1_2()->listManifestByInterface(
                    ICameraProvider::descriptor, [&](const auto& found) { names = found; });
    (void)listed.isOk();
    return names;
}

sp<ICameraProvider> FloorServices::find(const std::string& instance) const {
    return ICameraProvider::getService(instance, false);
}

bool FloorProvider::connect(Connections::value_type& connection) {
    auto& [instance, ends] = connection;
    ends.service = mServices->find(instance);
    if (ends.service == nullptr) return false;
    const uint64_t cookie = reinterpret_cast<uintptr_t>(&connection);
    if (!ends.service->linkToDeath(this, cookie).withDefault(false)) return false;
    ICameraProvider* const shim =
            HIDL_FETCH_ICameraProvider_shim(instance.c_str(), ends.service.get());
    ends.shim = shim;
    return shim != nullptr;
}

Return<Status> FloorProvider::setCallback(const sp<ICameraProviderCallback>& callback) {
    mCallback = callback;
    for (auto& [instance, connection] : mConnections) {
        const sp<ICameraProvider> shim = connection.shim.promote();
        if (shim == nullptr || !shim->setCallback(this).isOk()) return Status::INTERNAL_ERROR;
    }
    return Status::OK;
}

Return<void> FloorProvider::isSetTorchModeSupported(isSetTorchModeSupported_cb _hidl_cb) {
    const sp<ICameraProvider> shim = mConnections.begin()->second.shim.promote();
    return shim->isSetTorchModeSupported(std::move(_hidl_cb));
}

}  // namespace orvo::benchmarks
