// SPDX-License-Identifier: Apache-2.0
// The interfaces whose generated code the fuzzers feed, and honest calls of all their methods.

#pragma once

#include <functional>
#include <string>
#include <vector>

#include <hwbinder/IBinder.h>

#include "ParcelContents.h"

namespace orvo::fuzz {

/** One call that an honest caller made, and its honest answer. Both own all that they hold. */
struct HonestCall {
    uint32_t code;
    uint32_t flags;
    android::hardware::transport::OwnedContents data;
    android::hardware::transport::OwnedContents reply;  ///< null for oneway calls
};

/** One interface. */
struct Interface {
    std::string name;
    /** A fresh stub whose implementation takes everything: what breaks, breaks before it. */
    android::sp<android::hardware::IBinder> (*makeStub)();
    /** Each makes one call through a proxy for the object; together all methods, all arguments. */
    std::vector<std::function<void(const android::sp<android::hardware::IBinder>& object)>> methods;
    /** Of each method: what it sends, and what the stub answers. */
    std::vector<HonestCall> calls;

    void callAll(const android::sp<android::hardware::IBinder>& object) const {
        for (const auto& call : methods) call(object);
    }
};

/** Made by the first call, on one thread; never empty. */
const std::vector<Interface>& interfaces();

}  // namespace orvo::fuzz
