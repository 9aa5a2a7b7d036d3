// SPDX-License-Identifier: Apache-2.0
// Links to the death of an object: who owns them, and whom they tell.

#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <hidl/HidlTransportSupport.h>
#include <orvo/test/kinds/1.1/BpHwKinds.h>

#include "tests/host/hidl/EchoingKinds.h"
#include "tests/host/hidl/LoopBackBinder.h"

namespace {

using namespace android;
using android::hardware::hidl_death_recipient;
using android::hidl::base::V1_0::IBase;
using orvo::test::EchoingKinds;
using orvo::test::LoopBackBinder;
using orvo::test::kinds::V1_1::BpHwKinds;
using orvo::test::kinds::V1_1::IKinds;

struct Mourner : public hidl_death_recipient {
    void serviceDied(uint64_t cookie, const wp<IBase>& who) override {
        deaths.push_back({cookie, who});
    }
    std::vector<std::pair<uint64_t, wp<IBase>>> deaths;
};

class DeathLinkTest : public testing::Test {
  protected:
    const sp<LoopBackBinder> mBinder = new LoopBackBinder(nullptr);
    sp<IKinds> mProxy = new BpHwKinds(mBinder);
    sp<Mourner> mMourner = new Mourner();
};

TEST_F(DeathLinkTest, ALocalObjectTakesEveryRecipientAndNeverDies) {
    const sp<EchoingKinds> kinds = new EchoingKinds();
    EXPECT_TRUE(kinds->linkToDeath(mMourner, 1));
    EXPECT_FALSE(kinds->linkToDeath(nullptr, 1));
    EXPECT_TRUE(kinds->unlinkToDeath(mMourner));
    EXPECT_FALSE(kinds->unlinkToDeath(nullptr));
}

TEST_F(DeathLinkTest, TheRecipientGetsItsCookieAndTheProxyThatLinked) {
    EXPECT_TRUE(mProxy->linkToDeath(mMourner, 7));
    mBinder->sendObituary();
    ASSERT_EQ(1u, mMourner->deaths.size());
    EXPECT_EQ(7u, mMourner->deaths[0].first);
    EXPECT_EQ(mProxy.get(), mMourner->deaths[0].second.promote().get());
}

TEST_F(DeathLinkTest, EachLinkIsToldOnceInOrder) {
    EXPECT_TRUE(mProxy->linkToDeath(mMourner, 1));
    EXPECT_TRUE(mProxy->linkToDeath(mMourner, 2));
    mBinder->sendObituary();
    ASSERT_EQ(2u, mMourner->deaths.size());
    EXPECT_EQ(1u, mMourner->deaths[0].first);
    EXPECT_EQ(2u, mMourner->deaths[1].first);
}

TEST_F(DeathLinkTest, TheRecipientIsHeldWeakly) {
    const wp<Mourner> weak = mMourner;
    EXPECT_TRUE(mProxy->linkToDeath(mMourner, 1));
    mMourner = nullptr;
    EXPECT_EQ(nullptr, weak.promote());
    mBinder->sendObituary();
}

TEST_F(DeathLinkTest, ARefusedLinkIsAFalseInsideASuccess) {
    mBinder->linkStatus = DEAD_OBJECT;
    const auto result = mProxy->linkToDeath(mMourner, 1);
    EXPECT_TRUE(result.isOk());
    EXPECT_FALSE(result);
}

TEST_F(DeathLinkTest, UnlinkingTakesTheNewestLinkOfTheRecipient) {
    const sp<Mourner> other = new Mourner();
    EXPECT_TRUE(mProxy->linkToDeath(mMourner, 1));
    EXPECT_TRUE(mProxy->linkToDeath(other, 2));
    EXPECT_TRUE(mProxy->linkToDeath(mMourner, 3));
    EXPECT_TRUE(mProxy->unlinkToDeath(mMourner));
    mBinder->sendObituary();
    ASSERT_EQ(1u, mMourner->deaths.size());
    EXPECT_EQ(1u, mMourner->deaths[0].first);
    EXPECT_EQ(1u, other->deaths.size());
}

TEST_F(DeathLinkTest, UnlinkingWithoutALinkIsFalse) {
    EXPECT_FALSE(mProxy->unlinkToDeath(mMourner));
    EXPECT_TRUE(mProxy->linkToDeath(mMourner, 1));
    const sp<IKinds> otherProxy = new BpHwKinds(mBinder);
    EXPECT_FALSE(otherProxy->unlinkToDeath(mMourner));
}

TEST_F(DeathLinkTest, UnlinkingAfterTheObituaryIsFalse) {
    EXPECT_TRUE(mProxy->linkToDeath(mMourner, 1));
    mBinder->unlinkStatus = DEAD_OBJECT;
    EXPECT_FALSE(mProxy->unlinkToDeath(mMourner));
}

TEST_F(DeathLinkTest, ANullRecipientIsLinkedAndNobodyIsTold) {
    EXPECT_TRUE(mProxy->linkToDeath(nullptr, 1));
    mBinder->sendObituary();
}

TEST_F(DeathLinkTest, ThereIsNoCallForLinks) {
    EXPECT_TRUE(mProxy->linkToDeath(mMourner, 1));
    EXPECT_TRUE(mProxy->unlinkToDeath(mMourner));
    EXPECT_TRUE(mBinder->calls.empty());
}

}  // namespace
