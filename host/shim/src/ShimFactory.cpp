// SPDX-License-Identifier: Apache-2.0
// The one function of libcameraprovidershim: makes shims, and keeps the newest of each name alive.

#include <map>
#include <string>

#include "ProviderShim.h"
#include "host/Mutex.h"

using android::sp;
using android::hardware::camera::provider::V2_4::ICameraProvider;

namespace {

/** The strong references that keep shims alive while their users hold them only weakly. */
class KeptShims {
  public:
    void keep(const std::string& instance, const sp<ICameraProvider>& shim) {
        sp<ICameraProvider> older = shim;
        {
            orvo::MutexLock lock(mMutex);
            std::swap(mNewest[instance], older);
        }
        // Released here, after the lock: this may be the last reference to its provider, whose
        // destructor may do anything, even ask for another shim.
    }

  private:
    orvo::Mutex mMutex;
    /** Provider instance name -> the newest shim of that name. */
    std::map<std::string, sp<ICameraProvider>> mNewest GUARDED_BY(mMutex);
};

KeptShims& keptShims() {
    static auto* const shims = new KeptShims;  // kept until the very end of the process
    return *shims;
}

}  // namespace

/**
 * Makes a shim for a provider.
 *
 * @param name the provider's instance name; null is taken as "".
 * @param provider what the shim forwards to; held strongly by the shim.
 * @return the new shim, kept alive until the next one of the same name is made; null for a null
 *         provider, in which case an older shim of that name stays.
 */
extern "C" __attribute__((visibility("default"))) ICameraProvider* HIDL_FETCH_ICameraProvider_shim(
        const char* name, ICameraProvider* provider) {
    if (provider == nullptr) return nullptr;
    const sp<ICameraProvider> shim = new orvo::ProviderShim(provider);
    keptShims().keep(name == nullptr ? "" : name, shim);
    return shim.get();
}
