// SPDX-License-Identifier: Apache-2.0
// Between interface objects and binders, and between HIDL types and parcels.

#define LOG_TAG "HidlBinderSupport"

#include <hidl/HidlBinderSupport.h>

#include <atomic>

#include <hidl/Static.h>
#include <hwbinder/IPCThreadState.h>
#include <hwbinder/ProcessState.h>
#include <utils/String16.h>
#include <utils/String8.h>

namespace android {
namespace hardware {

using ::android::hidl::base::V1_0::IBase;

namespace {
std::atomic<bool> gRpcThreadpoolConfigured{false};
}  // namespace

hidl_binder_death_recipient::hidl_binder_death_recipient(const sp<hidl_death_recipient>& recipient,
                                                         uint64_t cookie, const sp<IBase>& base)
    : mRecipient(recipient), mCookie(cookie), mBase(base) {}

void hidl_binder_death_recipient::binderDied(const wp<IBinder>&) {
    const sp<hidl_death_recipient> recipient = mRecipient.promote();
    if (recipient != nullptr) recipient->serviceDied(mCookie, mBase);
}

wp<hidl_death_recipient> hidl_binder_death_recipient::getRecipient() {
    return mRecipient;
}

status_t readEmbeddedFromParcel(const hidl_handle&, const Parcel& parcel, size_t parentHandle,
                                size_t parentOffset) {
    const native_handle_t* handle;
    return parcel.readNullableEmbeddedNativeHandle(
            parentHandle, parentOffset + hidl_handle::kOffsetOfNativeHandle, &handle);
}

status_t writeEmbeddedToParcel(const hidl_handle& handle, Parcel* parcel, size_t parentHandle,
                               size_t parentOffset) {
    return parcel->writeEmbeddedNativeHandle(handle.getNativeHandle(), parentHandle,
                                             parentOffset + hidl_handle::kOffsetOfNativeHandle);
}

status_t readEmbeddedFromParcel(const hidl_memory& memory, const Parcel& parcel,
                                size_t parentHandle, size_t parentOffset) {
    const native_handle_t* handle;
    status_t error = parcel.readNullableEmbeddedNativeHandle(
            parentHandle, parentOffset + hidl_memory::kOffsetOfHandle, &handle);
    if (error != OK) return error;
    return readEmbeddedFromParcel(memory.name(), parcel, parentHandle,
                                  parentOffset + hidl_memory::kOffsetOfName);
}

status_t writeEmbeddedToParcel(const hidl_memory& memory, Parcel* parcel, size_t parentHandle,
                               size_t parentOffset) {
    status_t error = parcel->writeEmbeddedNativeHandle(memory.handle(), parentHandle,
                                                       parentOffset + hidl_memory::kOffsetOfHandle);
    if (error != OK) return error;
    return writeEmbeddedToParcel(memory.name(), parcel, parentHandle,
                                 parentOffset + hidl_memory::kOffsetOfName);
}

status_t readEmbeddedFromParcel(const hidl_string& string, const Parcel& parcel,
                                size_t parentHandle, size_t parentOffset) {
    const void* text;
    size_t handle;
    status_t error = parcel.readEmbeddedBuffer(string.size() + 1, &handle, parentHandle,
                                               parentOffset + hidl_string::kOffsetOfBuffer, &text);
    if (error != OK) return error;
    if (static_cast<const char*>(text)[string.size()] != '\0') {
        ALOGE("Received a hidl_string that does not end with a NUL.");
        return BAD_VALUE;
    }
    return OK;
}

status_t writeEmbeddedToParcel(const hidl_string& string, Parcel* parcel, size_t parentHandle,
                               size_t parentOffset) {
    size_t handle;
    return parcel->writeEmbeddedBuffer(string.c_str(), string.size() + 1, &handle, parentHandle,
                                       parentOffset + hidl_string::kOffsetOfBuffer);
}

status_t writeToParcel(const hidl_version& version, Parcel& parcel) {
    return parcel.writeUint32(uint32_t{version.get_major()} << 16 | version.get_minor());
}

hidl_version* readFromParcel(const Parcel& parcel) {
    uint32_t version;
    if (parcel.readUint32(&version) != OK) return nullptr;
    return new hidl_version(version >> 16, version & 0xffff);
}

status_t readFromParcel(Status* status, const Parcel& parcel) {
    int32_t exception;
    status_t error = parcel.readInt32(&exception);
    if (error != OK) {
        status->setFromStatusT(error);
        return error;
    }
    if (exception == Status::EX_NONE) {
        *status = Status::ok();
        return OK;
    }
    String16 message;
    error = parcel.readString16(&message);
    if (error != OK) {
        status->setFromStatusT(error);
        return error;
    }
    status->setException(exception, String8(message).string());
    return OK;
}

status_t writeToParcel(const Status& status, Parcel* parcel) {
    if (status.exceptionCode() == Status::EX_TRANSACTION_FAILED) return status.transactionError();
    status_t error = parcel->writeInt32(status.exceptionCode());
    if (error != OK || status.exceptionCode() == Status::EX_NONE) return error;
    return parcel->writeString16(String16(status.exceptionMessage()));
}

sp<IBinder> getOrCreateCachedBinder(IBase* interface) {
    if (interface == nullptr) return nullptr;
    if (interface->isRemote()) {
        return IInterface::asBinder(dynamic_cast<IInterface*>(interface));
    }

    const std::string descriptor = details::getDescriptor(interface);
    const auto makeStub = details::getBnConstructorMap().get(descriptor, nullptr);
    if (makeStub == nullptr) {
        details::logAlwaysFatal(("No generated code is linked for the interface '" + descriptor +
                                 "' of an object that is sent to another process.")
                                        .c_str());
    }

    // One lock from the look to the entry, so that two threads cannot both make a stub.
    const std::unique_lock<std::mutex> lock = details::gBnMap->lock();
    const wp<BHwBinder> known = details::gBnMap->getLocked(interface, nullptr);
    sp<IBinder> stub = known.promote();
    if (stub != nullptr) return stub;
    stub = makeStub(interface);
    details::gBnMap->setLocked(interface, stub->localBinder());
    return stub;
}

void configureBinderRpcThreadpool(size_t maxThreads, bool callerWillJoin) {
    if (maxThreads == 0 && callerWillJoin) {
        details::logAlwaysFatal(
                "configureRpcThreadpool: 0 threads cannot include the caller; use at least 1 or "
                "do not join.");
    }
    const status_t error =
            ProcessState::self()->setThreadPoolConfiguration(maxThreads, callerWillJoin);
    LOG_ALWAYS_FATAL_IF(error != OK, "configureRpcThreadpool(%zu, %s) failed: %d.", maxThreads,
                        callerWillJoin ? "true" : "false", error);
    gRpcThreadpoolConfigured = true;
}

void joinBinderRpcThreadpool() {
    if (!gRpcThreadpoolConfigured) {
        details::logAlwaysFatal("joinRpcThreadpool: call configureRpcThreadpool first.");
    }
    IPCThreadState::self()->joinThreadPool();
}

int setupBinderPolling() {
    int fd;
    const status_t error = IPCThreadState::self()->setupPolling(&fd);
    if (error == OK) return fd;
    ALOGE("Cannot set up polling: %d.", error);
    return -1;
}

status_t handleBinderPoll() {
    return IPCThreadState::self()->handlePolledCommands();
}

void addPostCommandTask(const std::function<void(void)> task) {
    IPCThreadState::self()->addPostCommandTask(task);
}

}  // namespace hardware
}  // namespace android
