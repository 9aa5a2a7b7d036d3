// SPDX-License-Identifier: Apache-2.0
// Greeter: the service of tests, in both of its versions.

#pragma once

#include <atomic>
#include <string>

#include <orvo/test/greeter/1.1/IGreeter.h>

namespace orvo::testing {

/** Greets with its own name. */
template <typename IGreeter>
class GreeterOf : public IGreeter {
  public:
    explicit GreeterOf(std::string name) : mName(std::move(name)) {}

    ::android::hardware::Return<void> greet(const ::android::hardware::hidl_string& guest,
                                            typename IGreeter::greet_cb _hidl_cb) override {
        ++mGuests;
        _hidl_cb(mName + " greets " + std::string(guest));
        return ::android::hardware::Void();
    }

  protected:
    const std::string mName;
    std::atomic<uint32_t> mGuests{0};
};

using Greeter = GreeterOf<::orvo::test::greeter::V1_0::IGreeter>;

/** Knows how many guests it has greeted. */
class CountingGreeter : public GreeterOf<::orvo::test::greeter::V1_1::IGreeter> {
  public:
    using GreeterOf::GreeterOf;
    ::android::hardware::Return<uint32_t> guests() override { return mGuests.load(); }
};

/** What a greeter says to "you"; the transport's error if it says nothing. */
inline std::string greetingOf(const ::android::sp<::orvo::test::greeter::V1_0::IGreeter>& greeter) {
    std::string greeting;
    const auto asked = greeter->greet(
            "you", [&](const ::android::hardware::hidl_string& text) { greeting = text; });
    return asked.isOk() ? greeting : asked.description();
}

}  // namespace orvo::testing
