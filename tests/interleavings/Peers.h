// SPDX-License-Identifier: Apache-2.0
// Those on the other side of the provider object: providers, their shims, the framework.
#pragma once

#include "tests/interleavings/World.h"

namespace orvo::interleavings {

/**
 * Memory lasts for as long as weak references do, so that a caller that holds nothing is found by a
 * check and not by a crash.
 */
template <typename Interface>
class Watched : public Interface {
  public:
    /** `held`: whether somebody does is part of that. */
    explicit Watched(Cells held) : mHeld(held) {
        this->extendObjectLifetime(android::RefBase::OBJECT_LIFETIME_WEAK);
        ++alive;
    }
    ~Watched() override { --alive; }
    void onLastStrongRef(const void* /* id */) override {
        if (Machine* const machine = Machine::current()) machine->touch(0, mHeld);
    }
    bool onIncStrongAttempted(uint32_t /* flags */, const void* /* id */) override { return false; }

    static inline int alive = 0;

  private:
    const Cells mHeld;
};

/** One process of a provider, or the shim in front of it: every call is one of the machine's. */
class Peer : public Watched<ICameraProvider> {
  public:
    using Status = android::hardware::camera::common::V1_0::Status;
    using Recipient = android::hardware::hidl_death_recipient;
    template <typename T>
    using Return = android::hardware::Return<T>;

    Peer(ProviderProcess& process, int generation)
        : Watched(process.shimCell), mProcess(process), mGeneration(generation) {}

    int generation() const { return mGeneration; }

    Return<Status> setCallback(const android::sp<ICameraProviderCallback>& callback) override;
    Return<void> getVendorTags(getVendorTags_cb _hidl_cb) override;
    Return<void> getCameraIdList(getCameraIdList_cb _hidl_cb) override;
    Return<void> isSetTorchModeSupported(isSetTorchModeSupported_cb _hidl_cb) override;
    Return<void> getCameraDeviceInterface_V1_x(const android::hardware::hidl_string& name,
                                               getCameraDeviceInterface_V1_x_cb _hidl_cb) override;
    Return<void> getCameraDeviceInterface_V3_x(const android::hardware::hidl_string& name,
                                               getCameraDeviceInterface_V3_x_cb _hidl_cb) override;
    Return<bool> linkToDeath(const android::sp<Recipient>& recipient, uint64_t cookie) override;
    Return<bool> unlinkToDeath(const android::sp<Recipient>& recipient) override;

  private:
    bool isAlive() const { return mProcess.alive && mProcess.generation == mGeneration; }
    void begin(const std::string& kind, bool changes = false);
    void end(const std::string& kind);
    template <typename Answer>
    Return<void> forward(const std::string& kind, const Answer& answer);

    ProviderProcess& mProcess;
    const int mGeneration;
};

/** A callback of the framework. */
class Framework : public Watched<ICameraProviderCallback> {
  public:
    template <typename T>
    using Return = android::hardware::Return<T>;

    explicit Framework(int number) : Watched(kCallbackHeldCell), number(number) {}

    Return<void> cameraDeviceStatusChange(
            const android::hardware::hidl_string& name,
            android::hardware::camera::common::V1_0::CameraDeviceStatus status) override;
    Return<void> torchModeStatusChange(
            const android::hardware::hidl_string& name,
            android::hardware::camera::common::V1_0::TorchModeStatus status) override;

    const int number;

  private:
    Return<void> hear(const std::string& name, const std::string& what);
};

}  // namespace orvo::interleavings
