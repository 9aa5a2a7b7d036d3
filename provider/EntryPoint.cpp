// SPDX-License-Identifier: Apache-2.0
// The library's entry point, and the one-time load of the MR provider library behind "default/0".

#include <dlfcn.h>
#include <pthread.h>
#include <string.h>

#include <memory>

#include "mapper/ProviderMapper.h"
#include "provider/Log.h"
#include "provider/OrvoCameraServiceImplementation.h"
#include "provider/service/HardwareServiceInteractionProxy.h"

namespace android::hardware::camera::provider::V2_4::implementation {
namespace {

using FetchFunction = ICameraProvider* (*)(const char* name);

constexpr char kMRInstance[] = "default/0";
constexpr char kMRLibrary[] = "/vendor/lib64/vendor.quill.mrprovider.provider@2.4-impl.so";
constexpr char kMREntrySymbol[] = "HIDL_FETCH_ICameraProvider";
constexpr char kMRLoader[] = "LoadMRProviderInterface";  // What the log calls the load.

pthread_mutex_t gMRProviderMutex = PTHREAD_MUTEX_INITIALIZER;
// Null until a load succeeds. Never closed: providers that the library made live in it.
void* gMRProviderHandle = nullptr;

struct MRProviderLock {
    MRProviderLock() { pthread_mutex_lock(&gMRProviderMutex); }
    ~MRProviderLock() { pthread_mutex_unlock(&gMRProviderMutex); }
};

// The MR library's entry, or null after logging why there is none.
FetchFunction findMREntry() {
    const MRProviderLock lock;
    if (gMRProviderHandle == nullptr) gMRProviderHandle = dlopen(kMRLibrary, RTLD_NOW);
    if (gMRProviderHandle == nullptr) {
        ALOGE("%s: DLOPEN failed for %s: %s", kMRLoader, kMRLibrary, dlerror());
        return nullptr;
    }
    const auto entry = reinterpret_cast<FetchFunction>(dlsym(gMRProviderHandle, kMREntrySymbol));
    if (entry == nullptr) {
        ALOGE("%s: %s does not have func: HIDL_FETCH_ICameraProvider /n", kMRLoader, kMRLibrary);
    }
    return entry;
}

// The MR library's own provider, with its references as they are. Its entry runs without the lock.
ICameraProvider* fetchMRProvider() {
    ALOGI("Creating MR provider");
    const FetchFunction fetch = findMREntry();
    ICameraProvider* const provider = fetch == nullptr ? nullptr : fetch(kMRInstance);
    if (provider == nullptr) ALOGE("Could not create MR provider");
    return provider;
}

}  // namespace

ICameraProvider* HIDL_FETCH_ICameraProvider(const char* name) {
    // A routine line at error priority on purpose: it survives every log filter.
    ALOGE("HIDL_FETCH_ICameraProvider %s", name);
    // A prefix on purpose: anything that begins with "default/0" is the MR provider.
    if (strncmp(name, kMRInstance, strlen(kMRInstance)) == 0) return fetchMRProvider();

    const sp<OrvoCameraServiceImplementation> implementation = new OrvoCameraServiceImplementation(
            name, std::make_shared<HardwareServiceInteractionProxy>(),
            std::make_shared<::orvo::camera::ProviderMapper>());
    if (!implementation->mIsValid) {
        ALOGI("Could not create OrvoCameraServiceImplementation for %s", name);
        return nullptr;
    }

    implementation->initialize();
    // For the caller, who gets a bare pointer.
    implementation->incStrong(implementation.get());
    ALOGI("Returning implementation %p for %s\n", implementation.get(), name);
    return implementation.get();
}

}  // namespace android::hardware::camera::provider::V2_4::implementation
