// SPDX-License-Identifier: Apache-2.0
// Connects one underlying provider to its descriptor.

#include "provider/Log.h"
#include "provider/OrvoCameraServiceImplementation.h"

namespace android::hardware::camera::provider::V2_4::implementation {

/**
 * Exported by libcameraprovidershim: makes a shim that forwards to `provider`, or returns null.
 * The shim library keeps the shim alive; here it is only referred to weakly.
 */
extern "C" ICameraProvider* HIDL_FETCH_ICameraProvider_shim(const char* name,
                                                            ICameraProvider* provider);

bool OrvoCameraServiceImplementation::initializeProviderService(const HALDescriptor* descriptor,
                                                                const std::string& instanceName) {
    if (descriptor == nullptr) {
        ALOGE("Cannot initialize null HALDescriptor");
        return false;
    }

    // A death, or another reconnection, may change the descriptor at any moment; this one stays.
    const sp<ICameraProvider> provider = mServiceProxy->getService(instanceName);
    // Stored before it is checked on purpose: a failed look-up also drops an earlier connection.
    replaceUnlocked(descriptor->mProvider, provider);
    if (provider == nullptr) {
        ALOGE("Failed to get service %s", instanceName.c_str());
        return false;
    }

    const uint64_t cookie = reinterpret_cast<uintptr_t>(descriptor);
    if (!provider->linkToDeath(this, cookie).withDefault(false)) {
        ALOGE("Could not link to death for %s", instanceName.c_str());
        replaceUnlocked(descriptor->mProvider, {});
        return false;
    }

    const wp<ICameraProvider> shim =
            HIDL_FETCH_ICameraProvider_shim(descriptor->mName.c_str(), provider.get());
    replaceUnlocked(descriptor->mShim, shim);
    if (shim == nullptr) {
        ALOGE("Failed to create QuillCameraProviderShim for %s", instanceName.c_str());
        // Looked at only so that the platform does not end the process over a failure here.
        (void)provider->unlinkToDeath(this).isOk();
        replaceUnlocked(descriptor->mProvider, {});
        return false;
    }
    return true;
}

}  // namespace android::hardware::camera::provider::V2_4::implementation
