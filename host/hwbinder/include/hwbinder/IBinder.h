// SPDX-License-Identifier: Apache-2.0
// IBinder: an object that can be called, in this process or in another one.

#pragma once

#include <stdint.h>

#include <functional>
#include <memory>

#include <utils/Errors.h>
#include <utils/RefBase.h>

namespace android {
namespace hardware {

class BHwBinder;
class BpHwBinder;
class Parcel;

/**
 * Common face of local objects (BHwBinder) and remote ones (BpHwBinder).
 *
 * Every method may be called on any thread. None may be called while holding a lock that a death
 * recipient or a called object also takes.
 */
class IBinder : public virtual RefBase {
  public:
    /** Receives the reply of one call, rewound to its start. Runs on the calling thread. */
    using TransactCallback = std::function<void(Parcel&)>;

    enum {
        /** The caller does not wait; `reply` is not filled. */
        FLAG_ONEWAY = 1,
    };

    /**
     * Calls the object.
     *
     * @param code what to do; the object's interface gives it its meaning.
     * @param data the arguments. Memory that it refers to must stay valid until this returns.
     * @param reply filled with the answer; may be null only for FLAG_ONEWAY.
     * @param callback for local objects: run by the object as soon as the reply is complete, which
     *                 may be before this returns.
     * @return OK, DEAD_OBJECT when the object's process is gone, FAILED_TRANSACTION when the call
     *         was refused by the transport, or whatever error the object answered with.
     */
    virtual status_t transact(uint32_t code, const Parcel& data, Parcel* reply, uint32_t flags = 0,
                              TransactCallback callback = nullptr) = 0;

    /** Told once when the process of a remote object is gone. */
    class DeathRecipient : public virtual RefBase {
      public:
        /** Runs on a thread of the pool, with no lock held. `who` is the object that was linked. */
        virtual void binderDied(const wp<IBinder>& who) = 0;
    };

    /**
     * Asks for one binderDied per link. The recipient is held strongly until then or until it is
     * unlinked.
     *
     * @return OK; DEAD_OBJECT when the obituary has already gone out; INVALID_OPERATION for a local
     *         object.
     */
    virtual status_t linkToDeath(const sp<DeathRecipient>& recipient, void* cookie = nullptr,
                                 uint32_t flags = 0) = 0;

    /**
     * Takes back the first link that matches: by recipient, or by cookie where the recipient is
     * null.
     *
     * @param outRecipient if not null, receives the recipient that was removed.
     * @return OK; NAME_NOT_FOUND; DEAD_OBJECT when the obituary has already gone out;
     *         INVALID_OPERATION for a local object.
     */
    virtual status_t unlinkToDeath(const wp<DeathRecipient>& recipient, void* cookie = nullptr,
                                   uint32_t flags = 0,
                                   wp<DeathRecipient>* outRecipient = nullptr) = 0;

    /** Lets an interface recognise its own subclass. Always false here. */
    virtual bool checkSubclass(const void* subclassId) const;

    typedef void (*object_cleanup_func)(const void* id, void* obj, void* cleanupCookie);
    /** Object attachment is not used by generated code and is inert on this platform. */
    virtual void attachObject(const void* objectId, void* object, void* cleanupCookie,
                              object_cleanup_func func) = 0;
    virtual void* findObject(const void* objectId) const = 0;
    virtual void detachObject(const void* objectId) = 0;

    /** This object if it lives in this process, else null. */
    virtual BHwBinder* localBinder();
    /** This object if it stands for one of another process, else null. */
    virtual BpHwBinder* remoteBinder();

  protected:
    ~IBinder() override;
};

}  // namespace hardware
}  // namespace android
