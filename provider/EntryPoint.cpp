// SPDX-License-Identifier: Apache-2.0
// The library's entry point, and the one-time load of the MR provider library behind "default/0".

#include <dlfcn.h>
#include <pthread.h>
#include <string.h>

#include <memory>
#include <utility>

#include <android/log.h>

#include "mapper/ProviderMapper.h"
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
        __android_log_print(ANDROID_LOG_ERROR, kLogTag, "%s: DLOPEN failed for %s: %s", kMRLoader,
                            kMRLibrary, dlerror());
        return nullptr;
    }
    const auto entry = reinterpret_cast<FetchFunction>(dlsym(gMRProviderHandle, kMREntrySymbol));
    if (entry == nullptr) {
        __android_log_print(ANDROID_LOG_ERROR, kLogTag,
                            "%s: %s does not have func: HIDL_FETCH_ICameraProvider /n", kMRLoader,
                            kMRLibrary);
    }
    return entry;
}

// The MR library's own provider, untouched: its references are that library's affair. Its entry
// runs without the lock.
ICameraProvider* fetchMRProvider() {
    __android_log_print(ANDROID_LOG_INFO, kLogTag, "Creating MR provider");
    const FetchFunction fetch = findMREntry();
    ICameraProvider* const provider = fetch == nullptr ? nullptr : fetch(kMRInstance);
    if (provider == nullptr) {
        __android_log_print(ANDROID_LOG_ERROR, kLogTag, "Could not create MR provider");
    }
    return provider;
}

}  // namespace

ICameraProvider* HIDL_FETCH_ICameraProvider(const char* name) {
    // A routine line at error priority on purpose: it survives every log filter.
    __android_log_print(ANDROID_LOG_ERROR, kLogTag, "HIDL_FETCH_ICameraProvider %s", name);
    // A prefix on purpose: anything that begins with "default/0" is the MR provider.
    if (strncmp(name, kMRInstance, strlen(kMRInstance)) == 0) return fetchMRProvider();

    auto mapper = std::make_shared<::orvo::camera::ProviderMapper>();
    auto serviceProxy = std::make_shared<HardwareServiceInteractionProxy>();
    const sp<OrvoCameraServiceImplementation> implementation =
            new OrvoCameraServiceImplementation(name, std::move(serviceProxy), std::move(mapper));
    if (!implementation->mIsValid) {
        __android_log_print(ANDROID_LOG_INFO, kLogTag,
                            "Could not create OrvoCameraServiceImplementation for %s", name);
        return nullptr;
    }

    implementation->initialize();
    // For the caller, who gets a bare pointer.
    implementation->incStrong(implementation.get());
    __android_log_print(ANDROID_LOG_INFO, kLogTag, "Returning implementation %p for %s\n",
                        implementation.get(), name);
    return implementation.get();
}

}  // namespace android::hardware::camera::provider::V2_4::implementation
