// SPDX-License-Identifier: Apache-2.0
// IInterface and BpInterface: what ties a client proxy to the binder it calls.

#pragma once

#include <hwbinder/Binder.h>

namespace android {
namespace hardware {

class IInterface : public virtual RefBase {
  public:
    IInterface();
    /** The binder behind an interface; null for null. */
    static sp<IBinder> asBinder(const IInterface* iface);
    static sp<IBinder> asBinder(const sp<IInterface>& iface);

  protected:
    ~IInterface() override;
    virtual IBinder* onAsBinder() = 0;
};

/** Base of every client proxy of the interface INTERFACE. */
template <typename INTERFACE>
class BpInterface : public INTERFACE, public IInterface, public BpHwRefBase {
  public:
    explicit BpInterface(const sp<IBinder>& remote) : BpHwRefBase(remote) {}
    IBinder* onAsBinder() override { return remote(); }
};

}  // namespace hardware
}  // namespace android
