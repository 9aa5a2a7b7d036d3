// SPDX-License-Identifier: Apache-2.0
// BHwBinder: an object of this process that other processes can call.

#pragma once

#include <vector>

#include <hwbinder/IBinder.h>

namespace android {
namespace hardware {

/** Base of every server stub. Held strongly by the transport while another process refers to it. */
class BHwBinder : public IBinder {
  public:
    BHwBinder();

    /** Rewinds `data` and calls onTransact on this thread. */
    status_t transact(uint32_t code, const Parcel& data, Parcel* reply, uint32_t flags = 0,
                      TransactCallback callback = nullptr) override;

    status_t linkToDeath(const sp<DeathRecipient>& recipient, void* cookie = nullptr,
                         uint32_t flags = 0) override;
    status_t unlinkToDeath(const wp<DeathRecipient>& recipient, void* cookie = nullptr,
                           uint32_t flags = 0, wp<DeathRecipient>* outRecipient = nullptr) override;

    void attachObject(const void* objectId, void* object, void* cleanupCookie,
                      object_cleanup_func func) override;
    void* findObject(const void* objectId) const override;
    void detachObject(const void* objectId) override;
    BHwBinder* localBinder() override;

    /** Scheduling wishes and the wish for a security context are kept and otherwise ignored. */
    int getMinSchedulingPolicy();
    int getMinSchedulingPriority();
    bool isRequestingSid();

  protected:
    ~BHwBinder() override;

    /** Handles one call. The default answers UNKNOWN_TRANSACTION. */
    virtual status_t onTransact(uint32_t code, const Parcel& data, Parcel* reply,
                                uint32_t flags = 0, TransactCallback callback = nullptr);

    void setRequestingSid(bool requestSid);

    // No lock: set before the object is given away.
    int mSchedPolicy;
    int mSchedPriority;

  private:
    bool mRequestingSid = false;
};

/** Base of every client proxy: holds the binder strongly for as long as it is itself referenced. */
class BpHwRefBase : public virtual RefBase {
  protected:
    explicit BpHwRefBase(const sp<IBinder>& binder);
    ~BpHwRefBase() override;
    void onFirstRef() override;
    void onLastStrongRef(const void* id) override;
    bool onIncStrongAttempted(uint32_t flags, const void* id) override;

  public:
    /** The binder that calls go to. Owned by this object; null if it was made from null. */
    IBinder* remote() const { return mRemote.get(); }

  private:
    const sp<IBinder> mRemote;
};

}  // namespace hardware
}  // namespace android
