// SPDX-License-Identifier: Apache-2.0
// FakePeer: stands for an object of another process, as a service and as a listener.

#pragma once

#include <functional>
#include <string>
#include <vector>

#include <android/hidl/manager/1.0/IServiceNotification.h>
#include <gtest/gtest.h>

namespace orvo::testing {

/** Dies, and refuses, when the test says so. Used by one thread at a time unless a test says
 *  otherwise. */
class FakePeer : public ::android::hidl::manager::V1_0::IServiceNotification {
  public:
    template <typename T>
    using Return = ::android::hardware::Return<T>;
    using Status = ::android::hardware::Status;
    using hidl_string = ::android::hardware::hidl_string;
    using hidl_death_recipient = ::android::hardware::hidl_death_recipient;

    ~FakePeer() override {
        if (onDestruction) onDestruction();
    }

    Return<void> onRegistration(const hidl_string& fqName, const hidl_string& name,
                                bool preexisting) override {
        if (unreachable) return Status::fromStatusT(::android::DEAD_OBJECT);
        told.push_back(std::string(preexisting ? "existing " : "new ") + std::string(fqName) + "/" +
                       std::string(name));
        return ::android::hardware::Void();
    }

    Return<bool> linkToDeath(const ::android::sp<hidl_death_recipient>& recipient,
                             uint64_t cookie) override {
        if (unreachable) return Status::fromStatusT(::android::DEAD_OBJECT);
        if (dead) return false;
        mLinks.push_back({recipient, cookie});
        if (onLink) onLink();
        return true;
    }

    /** Tells everybody who is linked, as the transport would. */
    void die() {
        dead = true;
        for (const Link& link : mLinks) {
            const ::android::sp<hidl_death_recipient> recipient = link.recipient.promote();
            if (recipient != nullptr) recipient->serviceDied(link.cookie, this);
        }
        mLinks.clear();
    }

    /** Whether every call fails. */
    bool unreachable = false;
    /** Whether the obituary has gone out. */
    bool dead = false;
    /** Every notification, in order. */
    std::vector<std::string> told;
    std::function<void()> onLink;
    std::function<void()> onDestruction;

  private:
    /** Held weakly, as proxies do: who links must keep the recipient. */
    struct Link {
        ::android::wp<hidl_death_recipient> recipient;
        uint64_t cookie;
    };
    std::vector<Link> mLinks;
};

}  // namespace orvo::testing
