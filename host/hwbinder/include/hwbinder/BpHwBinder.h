// SPDX-License-Identifier: Apache-2.0
// BpHwBinder: stands in this process for an object of another one.

#pragma once

#include <memory>

#include <hwbinder/IBinder.h>

namespace android {
namespace hardware {

namespace transport {
struct RemoteObject;
}

/**
 * The remote end of a binder. While it is alive there is one per process and object, so two of
 * them are the same object exactly if they are the same pointer.
 */
class BpHwBinder : public IBinder {
  public:
    /** Made only by the transport, when a reference to another process's object arrives. */
    explicit BpHwBinder(std::shared_ptr<transport::RemoteObject> object);

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
    BpHwBinder* remoteBinder() override;

    /** A number that tells this object from every other that this process has known. */
    int32_t handle() const;

    /** Delivers binderDied to every link, once. Called by the transport on a pool thread. */
    void sendObituary();

    /** What the transport knows of the object. */
    const std::shared_ptr<transport::RemoteObject>& remoteObject() const { return mObject; }

  protected:
    ~BpHwBinder() override;

  private:
    struct DeathLinks;

    const std::shared_ptr<transport::RemoteObject> mObject;
    const std::unique_ptr<DeathLinks> mLinks;
};

}  // namespace hardware
}  // namespace android
