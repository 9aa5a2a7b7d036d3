// SPDX-License-Identifier: Apache-2.0
// Stands in a test for a remote object whose stub lives in the same process.

#pragma once

#include <map>
#include <string>
#include <vector>

#include <hwbinder/IBinder.h>
#include <hwbinder/Parcel.h>

namespace orvo::test {

/**
 * A binder that is not local, so that generated code puts a proxy before it, and that hands each
 * call to a stub of this process. Parcels are copied both ways, as between processes: what a call
 * leaves behind in its caller's memory cannot be what the stub reads. Not thread-safe.
 */
class LoopBackBinder : public android::hardware::IBinder {
  public:
    using Status = android::status_t;
    using Parcel = android::hardware::Parcel;

    /** One call, as the transport saw it. */
    struct Call {
        uint32_t code;
        uint32_t flags;
        std::string token;
    };

    /** Null for a process that is gone: every call gives DEAD_OBJECT. */
    explicit LoopBackBinder(android::sp<android::hardware::IBinder> stub);

    std::vector<Call> calls;
    /** The calls with this code fail with this error and are not handed over. */
    std::map<uint32_t, Status> errors;
    /** What linking and unlinking answer. */
    Status linkStatus = android::OK;
    Status unlinkStatus = android::OK;
    /** Every link that was made and not taken back, oldest first. */
    std::vector<android::sp<DeathRecipient>> links;

    Status transact(uint32_t code, const Parcel& data, Parcel* reply, uint32_t flags,
                    TransactCallback callback) override;
    Status linkToDeath(const android::sp<DeathRecipient>& recipient, void* cookie,
                       uint32_t flags) override;
    Status unlinkToDeath(const android::wp<DeathRecipient>& recipient, void* cookie, uint32_t flags,
                         android::wp<DeathRecipient>* outRecipient) override;
    void attachObject(const void* id, void* object, void* cookie, object_cleanup_func f) override;
    void* findObject(const void* id) const override;
    void detachObject(const void* id) override;

    /** Tells every link that the process is gone. */
    void sendObituary();

    /** Makes `to` what another process would receive of `from`. */
    static Status carry(const Parcel& from, Parcel* to);

  private:
    const android::sp<android::hardware::IBinder> mStub;
};

}  // namespace orvo::test
