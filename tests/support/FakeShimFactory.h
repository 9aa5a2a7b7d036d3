// SPDX-License-Identifier: Apache-2.0
// The shim library of a test process: makes scripted shims and keeps them alive.
#pragma once

#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "tests/support/ScriptedProvider.h"

namespace orvo::test {

/**
 * Serves HIDL_FETCH_ICameraProvider_shim of the whole process while it exists; at most one does at
 * a time. Holds the strong reference of the newest shim of each name. Any thread.
 */
class FakeShimFactory {
  public:
    using ICameraProvider = android::hardware::camera::provider::V2_4::ICameraProvider;

    struct Call {
        std::string name;
        ICameraProvider* provider;
    };

    FakeShimFactory();
    ~FakeShimFactory();
    FakeShimFactory(const FakeShimFactory&) = delete;
    FakeShimFactory& operator=(const FakeShimFactory&) = delete;

    /** Hands out `shim` as the next shim of `name`. */
    void prepare(const std::string& name, const android::sp<ScriptedProvider>& shim);
    /**
     * Lets `maker` make the shims of `name` from now on, and keep them alive. Null: the factory
     * makes them itself again.
     */
    void makeWith(const std::string& name, const std::function<ICameraProvider*()>& maker);
    /** From now on no shim of `name` can be made. */
    void refuse(const std::string& name);
    /** From now on shims of `name` are made again. */
    void allow(const std::string& name);
    /** Lets go of the shim of `name`, as if its library had dropped it. */
    void drop(const std::string& name);
    /** The newest shim of `name`, or null. */
    android::sp<ScriptedProvider> shim(const std::string& name) const;
    std::vector<Call> calls() const;

    ICameraProvider* make(const std::string& name, ICameraProvider* provider);

  private:
    struct Name {
        android::sp<ScriptedProvider> prepared;
        android::sp<ScriptedProvider> newest;
        bool refused = false;
        std::function<ICameraProvider*()> maker;
    };

    mutable std::mutex mMutex;
    std::map<std::string, Name> mNames;  // Key: instance name.
    std::vector<Call> mCalls;
};

}  // namespace orvo::test
