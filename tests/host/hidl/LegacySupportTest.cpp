// SPDX-License-Identifier: Apache-2.0
// Service programs that register the implementation of a library, when there is none.

#include <stdlib.h>

#include <android/hardware/camera/provider/2.4/ICameraProvider.h>
#include <gtest/gtest.h>
#include <hidl/LegacySupport.h>

namespace {

using namespace android::hardware;
using android::hardware::camera::provider::V2_4::ICameraProvider;

TEST(LegacySupportTest, WithoutAnImplementationNothingIsRegistered) {
    EXPECT_EQ(EXIT_FAILURE, registerPassthroughServiceImplementation<ICameraProvider>("nobody/0"));
    EXPECT_EQ(EXIT_FAILURE,
              registerLazyPassthroughServiceImplementation<ICameraProvider>("nobody/0"));
}

// Each of these configures the thread pool, which a process does once.
TEST(LegacySupportDeathTest, WithoutAnImplementationTheProgramEnds) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto failure = testing::ExitedWithCode(EXIT_FAILURE);
    const char* message = "Could not get passthrough implementation for .*ICameraProvider/";
    EXPECT_EXIT(exit(defaultPassthroughServiceImplementation<ICameraProvider>("nobody/0", 2)),
                failure, message);
    EXPECT_EXIT(exit(defaultPassthroughServiceImplementation<ICameraProvider>()), failure, message);
    EXPECT_EXIT(exit(defaultLazyPassthroughServiceImplementation<ICameraProvider>("nobody/0")),
                failure, message);
    EXPECT_EXIT(exit(defaultLazyPassthroughServiceImplementation<ICameraProvider>(2)), failure,
                message);
}

}  // namespace
