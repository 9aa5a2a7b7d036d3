// SPDX-License-Identifier: Apache-2.0
// What every object of this process answers unless its implementation says otherwise.

#include <string>
#include <vector>

#include <gtest/gtest.h>
#include <hidl/HidlSupport.h>
#include <utils/misc.h>

#include "tests/host/hidl/EchoingKinds.h"

namespace {

using namespace android;
using android::hardware::hidl_string;
using android::hidl::base::V1_0::DebugInfo;
using android::hidl::base::V1_0::IBase;
using orvo::test::EchoingKinds;

class LocalObjectTest : public testing::Test {
  protected:
    const sp<IBase> mObject = new EchoingKinds();
};

TEST_F(LocalObjectTest, TheChainNamesTheMostDerivedInterfaceFirst) {
    std::vector<std::string> chain;
    EXPECT_TRUE(mObject->interfaceChain([&](const auto& descriptors) {
                           chain.assign(descriptors.begin(), descriptors.end());
                       })
                        .isOk());
    EXPECT_EQ(
            (std::vector<std::string>{"orvo.test.kinds@1.1::IKinds", "orvo.test.kinds@1.0::IKinds",
                                      "android.hidl.base@1.0::IBase"}),
            chain);
}

TEST_F(LocalObjectTest, TheDescriptorIsTheFirstOfTheChain) {
    std::string descriptor;
    EXPECT_TRUE(mObject->interfaceDescriptor([&](const hidl_string& told) { descriptor = told; })
                        .isOk());
    EXPECT_EQ("orvo.test.kinds@1.1::IKinds", descriptor);
}

TEST_F(LocalObjectTest, TheHashOfAnInterfaceThatIsNotFrozenIsZero) {
    std::vector<std::array<uint8_t, 32>> hashes;
    EXPECT_TRUE(mObject->getHashChain([&](const auto& chain) {
                           for (const auto& hash : chain) hashes.push_back(hash);
                       })
                        .isOk());
    ASSERT_EQ(3u, hashes.size());
    EXPECT_EQ((std::array<uint8_t, 32>{}), hashes[0]);
}

TEST_F(LocalObjectTest, PlainQuestionsSucceedAndDoNothing) {
    EXPECT_TRUE(mObject->ping().isOk());
    EXPECT_TRUE(mObject->debug(nullptr, {}).isOk());
    EXPECT_TRUE(mObject->setHALInstrumentation().isOk());
}

TEST_F(LocalObjectTest, DebugInfoNamesNoProcess) {
    DebugInfo info = {};
    EXPECT_TRUE(mObject->getDebugInfo([&](const DebugInfo& told) { info = told; }).isOk());
    EXPECT_EQ(-1, info.pid);
    EXPECT_EQ(0u, info.ptr);
    EXPECT_EQ(DebugInfo::Architecture::IS_64BIT, info.arch);
}

TEST_F(LocalObjectTest, ChangedPropertiesAreToldToThisProcess) {
    static int reports;
    reports = 0;
    add_sysprop_change_callback([] { reports++; }, 0);
    EXPECT_TRUE(mObject->notifySyspropsChanged().isOk());
    EXPECT_EQ(1, reports);
}

}  // namespace
