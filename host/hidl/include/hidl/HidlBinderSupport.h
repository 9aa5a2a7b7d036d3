// SPDX-License-Identifier: Apache-2.0
// Between interface objects and binders, and between HIDL types and parcels.

#pragma once

#include <stddef.h>
#include <stdint.h>

#include <functional>
#include <type_traits>

#include <android/hidl/base/1.0/BnHwBase.h>
#include <android/hidl/base/1.0/IBase.h>
#include <hidl/HidlSupport.h>
#include <hidl/HidlTransportUtils.h>
#include <hidl/MQDescriptor.h>
#include <hwbinder/IBinder.h>
#include <hwbinder/Parcel.h>
#include <log/log.h>
#include <utils/RefBase.h>

namespace android {
namespace hardware {

/** One link of a proxy to the death of its object. Holds the recipient and the proxy weakly. */
struct hidl_binder_death_recipient : public IBinder::DeathRecipient {
    hidl_binder_death_recipient(const sp<hidl_death_recipient>& recipient, uint64_t cookie,
                                const sp<::android::hidl::base::V1_0::IBase>& base);

    void binderDied(const wp<IBinder>& who) override;
    wp<hidl_death_recipient> getRecipient();

  private:
    const wp<hidl_death_recipient> mRecipient;
    const uint64_t mCookie;
    const wp<::android::hidl::base::V1_0::IBase> mBase;
};

/**
 * What an object points to follows it in a parcel; these write it there and read it in place. The
 * object itself is part of the buffer `parentHandle`, at `parentOffset`. An object that was read
 * lives as long as the parcel and must be neither destroyed nor moved from.
 */
status_t readEmbeddedFromParcel(const hidl_handle& handle, const Parcel& parcel,
                                size_t parentHandle, size_t parentOffset);
status_t writeEmbeddedToParcel(const hidl_handle& handle, Parcel* parcel, size_t parentHandle,
                               size_t parentOffset);
status_t readEmbeddedFromParcel(const hidl_memory& memory, const Parcel& parcel,
                                size_t parentHandle, size_t parentOffset);
status_t writeEmbeddedToParcel(const hidl_memory& memory, Parcel* parcel, size_t parentHandle,
                               size_t parentOffset);
status_t readEmbeddedFromParcel(const hidl_string& string, const Parcel& parcel,
                                size_t parentHandle, size_t parentOffset);
status_t writeEmbeddedToParcel(const hidl_string& string, Parcel* parcel, size_t parentHandle,
                               size_t parentOffset);

/**
 * The same for vectors and queues. What the elements of a vector point to is the caller's task:
 * `handle` receives the number of the buffer that holds the elements, their parent.
 */
template <typename T>
status_t readEmbeddedFromParcel(const hidl_vec<T>& vec, const Parcel& parcel, size_t parentHandle,
                                size_t parentOffset, size_t* handle) {
    const void* elements;
    return parcel.readNullableEmbeddedBuffer(vec.size() * sizeof(T), handle, parentHandle,
                                             parentOffset + hidl_vec<T>::kOffsetOfBuffer,
                                             &elements);
}

template <typename T>
status_t writeEmbeddedToParcel(const hidl_vec<T>& vec, Parcel* parcel, size_t parentHandle,
                               size_t parentOffset, size_t* handle) {
    return parcel->writeEmbeddedBuffer(vec.data(), vec.size() * sizeof(T), handle, parentHandle,
                                       parentOffset + hidl_vec<T>::kOffsetOfBuffer);
}

template <typename T, MQFlavor flavor>
status_t readEmbeddedFromParcel(MQDescriptor<T, flavor>& queue, const Parcel& parcel,
                                size_t parentHandle, size_t parentOffset) {
    using Queue = MQDescriptor<T, flavor>;
    size_t grantors;
    status_t error = readEmbeddedFromParcel(queue.grantors(), parcel, parentHandle,
                                            parentOffset + Queue::kOffsetOfGrantors, &grantors);
    if (error != OK) return error;
    const native_handle_t* handle;
    return parcel.readNullableEmbeddedNativeHandle(parentHandle,
                                                   parentOffset + Queue::kOffsetOfHandle, &handle);
}

template <typename T, MQFlavor flavor>
status_t writeEmbeddedToParcel(const MQDescriptor<T, flavor>& queue, Parcel* parcel,
                               size_t parentHandle, size_t parentOffset) {
    using Queue = MQDescriptor<T, flavor>;
    size_t grantors;
    status_t error = writeEmbeddedToParcel(queue.grantors(), parcel, parentHandle,
                                           parentOffset + Queue::kOffsetOfGrantors, &grantors);
    if (error != OK) return error;
    return parcel->writeEmbeddedNativeHandle(queue.handle(), parentHandle,
                                             parentOffset + Queue::kOffsetOfHandle);
}

/** A version is one number: major in the upper half, minor in the lower one. */
status_t writeToParcel(const hidl_version& version, Parcel& parcel);
/** The caller deletes the result; null if there is nothing to read. */
hidl_version* readFromParcel(const Parcel& parcel);

/** The number of the exception, and its message unless it is EX_NONE. */
status_t readFromParcel(Status* status, const Parcel& parcel);
/** EX_TRANSACTION_FAILED is not written: its error is the answer, for the transport to deliver. */
status_t writeToParcel(const Status& status, Parcel* parcel);

/**
 * The binder of an object: of a proxy the one it calls; of an object of this process its stub, of
 * which there is at most one at a time. Null for null. Ends the process if the generated code of
 * the object's interface is not linked. Calls the object's interfaceDescriptor.
 */
sp<IBinder> getOrCreateCachedBinder(::android::hidl::base::V1_0::IBase* interface);

template <typename IType, typename = std::enable_if_t<
                                  std::is_same<details::i_tag, typename IType::_hidl_tag>::value>>
sp<IBinder> toBinder(sp<IType> interface) {
    return getOrCreateCachedBinder(interface.get());
}

/**
 * The object of a binder: a new proxy for one of another process; for one of this process the
 * implementation itself if its chain has the interface, else null. Null for null. A binder of this
 * process must be a generated stub.
 */
template <typename IType, typename ProxyType, typename StubType>
sp<IType> fromBinder(const sp<IBinder>& binder) {
    static_assert(std::is_same<details::i_tag, typename IType::_hidl_tag>::value, "not pure");
    static_assert(std::is_same<details::bphw_tag, typename ProxyType::_hidl_tag>::value,
                  "no proxy");
    static_assert(std::is_same<details::bnhw_tag, typename StubType::_hidl_tag>::value, "no stub");
    if (binder == nullptr) return nullptr;
    if (binder->localBinder() == nullptr) return new ProxyType(binder);

    using ::android::hidl::base::V1_0::BnHwBase;
    using ::android::hidl::base::V1_0::IBase;
    const sp<IBase> implementation = static_cast<BnHwBase*>(binder->localBinder())->getImpl();
    if (!details::canCastInterface(implementation.get(), IType::descriptor)) return nullptr;
    return static_cast<IType*>(implementation.get());
}

/** What hidl/HidlTransportSupport.h offers, for this transport. */
void configureBinderRpcThreadpool(size_t maxThreads, bool callerWillJoin);
void joinBinderRpcThreadpool();
int setupBinderPolling();
status_t handleBinderPoll();

/** Runs the task after the call that this thread is serving has been answered. */
void addPostCommandTask(const std::function<void(void)> task);

}  // namespace hardware
}  // namespace android
