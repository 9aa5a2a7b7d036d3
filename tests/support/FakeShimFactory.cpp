// SPDX-License-Identifier: Apache-2.0
// The shim library of a test process.

#include "tests/support/FakeShimFactory.h"

#include <stdio.h>
#include <stdlib.h>

#include <utility>

namespace orvo::test {

using android::sp;

namespace {

FakeShimFactory* gCurrent = nullptr;

}  // namespace

FakeShimFactory::FakeShimFactory() {
    if (gCurrent != nullptr) abort();  // Two factories would split the calls.
    gCurrent = this;
}

FakeShimFactory::~FakeShimFactory() {
    gCurrent = nullptr;
}

void FakeShimFactory::prepare(const std::string& name, const sp<ScriptedProvider>& shim) {
    const std::lock_guard<std::mutex> lock(mMutex);
    mNames[name].prepared = shim;
}

void FakeShimFactory::makeWith(const std::string& name,
                               const std::function<ICameraProvider*()>& maker) {
    const std::lock_guard<std::mutex> lock(mMutex);
    mNames[name].maker = maker;
}

void FakeShimFactory::refuse(const std::string& name) {
    const std::lock_guard<std::mutex> lock(mMutex);
    mNames[name].refused = true;
}

void FakeShimFactory::allow(const std::string& name) {
    const std::lock_guard<std::mutex> lock(mMutex);
    mNames[name].refused = false;
}

void FakeShimFactory::drop(const std::string& name) {
    sp<ScriptedProvider> dropped;  // Destroyed after the lock is released.
    const std::lock_guard<std::mutex> lock(mMutex);
    dropped = std::exchange(mNames[name].newest, nullptr);
}

sp<ScriptedProvider> FakeShimFactory::shim(const std::string& name) const {
    const std::lock_guard<std::mutex> lock(mMutex);
    const auto found = mNames.find(name);
    return found == mNames.end() ? nullptr : found->second.newest;
}

std::vector<FakeShimFactory::Call> FakeShimFactory::calls() const {
    const std::lock_guard<std::mutex> lock(mMutex);
    return mCalls;
}

FakeShimFactory::ICameraProvider* FakeShimFactory::make(const std::string& name,
                                                        ICameraProvider* provider) {
    const std::lock_guard<std::mutex> lock(mMutex);
    mCalls.push_back({name, provider});
    Name& entry = mNames[name];
    if (entry.refused) return nullptr;
    if (entry.maker) return entry.maker();
    entry.newest = std::exchange(entry.prepared, nullptr);
    if (entry.newest == nullptr) entry.newest = new ScriptedProvider;
    return entry.newest.get();
}

}  // namespace orvo::test

extern "C" android::hardware::camera::provider::V2_4::ICameraProvider*
HIDL_FETCH_ICameraProvider_shim(
        const char* name, android::hardware::camera::provider::V2_4::ICameraProvider* provider) {
    if (orvo::test::gCurrent == nullptr) {
        fprintf(stderr, "a shim for %s in a test without a FakeShimFactory\n", name);
        abort();
    }
    return orvo::test::gCurrent->make(name, provider);
}
