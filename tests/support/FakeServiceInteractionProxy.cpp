// SPDX-License-Identifier: Apache-2.0
// A service manager with the services that a test gives it.

#include "tests/support/FakeServiceInteractionProxy.h"

#include <gtest/gtest.h>

namespace orvo::test {

using android::sp;
using android::hardware::hidl_string;
using android::hardware::hidl_vec;

FakeServiceInteractionProxy::~FakeServiceInteractionProxy() {
    if (onDestroyed) onDestroyed();
}

bool FakeServiceInteractionProxy::registerForNotifications(
        const std::string& serviceName,
        const sp<android::hidl::manager::V1_0::IServiceNotification>& /* notification */) {
    ADD_FAILURE() << "the provider object asked for notifications of " << serviceName;
    return false;
}

sp<FakeServiceInteractionProxy::ICameraProvider> FakeServiceInteractionProxy::getService(
        const std::string& serviceName) {
    if (onGetService) onGetService(serviceName);
    const std::lock_guard<std::mutex> lock(mMutex);
    ++mLookups[serviceName];
    const auto found = mServices.find(serviceName);
    return found == mServices.end() ? nullptr : found->second;
}

hidl_vec<hidl_string> FakeServiceInteractionProxy::listServices() {
    if (onListServices) onListServices();
    const std::lock_guard<std::mutex> lock(mMutex);
    ++mListings;
    return std::vector<hidl_string>(declared.begin(), declared.end());
}

void FakeServiceInteractionProxy::start(const std::string& serviceName,
                                        const sp<ICameraProvider>& service) {
    const std::lock_guard<std::mutex> lock(mMutex);
    mServices[serviceName] = service;
}

void FakeServiceInteractionProxy::stop(const std::string& serviceName) {
    const std::lock_guard<std::mutex> lock(mMutex);
    mServices.erase(serviceName);
}

int FakeServiceInteractionProxy::lookups(const std::string& serviceName) const {
    const std::lock_guard<std::mutex> lock(mMutex);
    const auto found = mLookups.find(serviceName);
    return found == mLookups.end() ? 0 : found->second;
}

int FakeServiceInteractionProxy::listings() const {
    const std::lock_guard<std::mutex> lock(mMutex);
    return mListings;
}

}  // namespace orvo::test
