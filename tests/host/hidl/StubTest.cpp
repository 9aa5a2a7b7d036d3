// SPDX-License-Identifier: Apache-2.0
// Stubs: what generated server code does with calls, and when it ends the process.

#include <thread>

#include <android/hidl/base/1.0/BnHwBase.h>
#include <gtest/gtest.h>
#include <hidl/HidlTransportSupport.h>
#include <hidl/Static.h>
#include <orvo/test/kinds/1.1/BnHwKinds.h>

#include "tests/host/hidl/EchoingKinds.h"

namespace {

using namespace android;
using android::hardware::getOrCreateCachedBinder;
using android::hardware::IBinder;
using android::hardware::Parcel;
using android::hardware::Return;
using android::hardware::Status;
using android::hardware::Void;
using android::hidl::base::V1_0::IBase;
using orvo::test::EchoingKinds;
using orvo::test::kinds::V1_0::Colour;

constexpr char kToken[] = "orvo.test.kinds@1.0::IKinds";
constexpr uint32_t kEchoTree = 1;
constexpr uint32_t kEchoColour = 6;
constexpr uint32_t kEchoKinds = 7;
constexpr uint32_t kNothing = 9;
constexpr uint32_t kNote = 10;
constexpr uint32_t kVersion = 11;

class StubTest : public testing::Test {
  protected:
    /** Calls the stub; the reply is left rewound in mReply. */
    status_t call(uint32_t code, uint32_t flags = 0) {
        const status_t status =
                mStub->transact(code, mData, &mReply, flags, [this](Parcel&) { mAnswered = true; });
        mReply.setDataPosition(0);
        return status;
    }

    Status replyStatus() {
        Status status;
        EXPECT_EQ(OK, readFromParcel(&status, mReply));
        return status;
    }

    void writeEmptyTree() {
        ASSERT_EQ(OK, mData.writeInterfaceToken(kToken));
        size_t parent;
        ASSERT_EQ(OK, mData.writeBuffer(&mTree, sizeof(mTree), &parent));
        ASSERT_EQ(OK, writeEmbeddedToParcel(mTree, &mData, parent, 0));
    }

    const sp<EchoingKinds> mKinds = new EchoingKinds();
    const sp<IBinder> mStub = getOrCreateCachedBinder(mKinds.get());
    const orvo::test::kinds::V1_0::Tree mTree = {};
    Parcel mData;
    Parcel mReply;
    bool mAnswered = false;
};

using StubDeathTest = StubTest;

TEST_F(StubTest, AnUnknownCodeIsRefused) {
    ASSERT_EQ(OK, mData.writeInterfaceToken(kToken));
    EXPECT_EQ(UNKNOWN_TRANSACTION, call(12));
    EXPECT_EQ(UNKNOWN_TRANSACTION, call(0));
}

TEST_F(StubTest, TheTokenOfAnotherInterfaceIsRefused) {
    ASSERT_EQ(OK, mData.writeInterfaceToken("orvo.test.kinds@1.1::IKinds"));
    EXPECT_EQ(BAD_TYPE, call(kNothing));
}

TEST_F(StubTest, AMethodWantsTheTokenOfTheInterfaceThatDeclaresIt) {
    ASSERT_EQ(OK, mData.writeInterfaceToken("orvo.test.kinds@1.1::IKinds"));
    ASSERT_EQ(OK, call(kVersion));
    ASSERT_TRUE(replyStatus().isOk());
    uint32_t minor = 0;
    EXPECT_EQ(OK, mReply.readUint32(&minor));
    EXPECT_EQ(1u, minor);
}

TEST_F(StubTest, ATwoWayMethodIsNotServedOneway) {
    ASSERT_EQ(OK, mData.writeInterfaceToken(kToken));
    EXPECT_EQ(UNKNOWN_ERROR, call(kNothing, IBinder::FLAG_ONEWAY));
}

TEST_F(StubTest, AOnewayMethodIsNotServedTwoWay) {
    ASSERT_EQ(OK, mData.writeInterfaceToken(kToken));
    EXPECT_EQ(UNKNOWN_ERROR, call(kNote));
}

TEST_F(StubTest, ACallWithoutItsArgumentsFails) {
    ASSERT_EQ(OK, mData.writeInterfaceToken(kToken));
    EXPECT_EQ(NOT_ENOUGH_DATA, call(kEchoColour));
    EXPECT_FALSE(mAnswered);
}

TEST_F(StubTest, ANullWhereABufferBelongsGivesAnException) {
    ASSERT_EQ(OK, mData.writeInterfaceToken(kToken));
    size_t parent;
    ASSERT_EQ(OK, mData.writeBuffer(nullptr, 0, &parent));
    EXPECT_EQ(OK, call(kEchoTree));
    EXPECT_EQ(Status::EX_NULL_POINTER, replyStatus().exceptionCode());
}

TEST_F(StubTest, ANullInterfaceArgumentIsPassedOn) {
    mKinds->lastKinds = mKinds;
    ASSERT_EQ(OK, mData.writeInterfaceToken(kToken));
    ASSERT_EQ(OK, mData.writeStrongBinder(nullptr));
    EXPECT_EQ(OK, call(kEchoKinds));
    EXPECT_EQ(nullptr, mKinds->lastKinds);
}

TEST_F(StubTest, TheReplyOfAResultCallbackLeavesInsideIt) {
    bool answeredInside = false;
    mKinds->treeBehaviour = [&](const auto& tree, auto callback) {
        callback(tree);
        answeredInside = mAnswered;
        return Void();
    };
    writeEmptyTree();
    EXPECT_EQ(OK, call(kEchoTree));
    EXPECT_TRUE(answeredInside);
}

TEST_F(StubTest, TheReplyOfASingleResultLeavesAfterTheMethod) {
    bool answeredInside = true;
    mKinds->colourBehaviour = [&](Colour colour) {
        answeredInside = mAnswered;
        return colour;
    };
    ASSERT_EQ(OK, mData.writeInterfaceToken(kToken));
    ASSERT_EQ(OK, mData.writeUint8(static_cast<uint8_t>(Colour::GREEN)));
    EXPECT_EQ(OK, call(kEchoColour));
    EXPECT_FALSE(answeredInside);
    EXPECT_TRUE(mAnswered);
    EXPECT_TRUE(replyStatus().isOk());
    uint8_t colour = 0;
    EXPECT_EQ(OK, mReply.readUint8(&colour));
    EXPECT_EQ(2, colour);
}

TEST_F(StubTest, AMethodWithoutResultsLeavesTheReplyToTheTransport) {
    ASSERT_EQ(OK, mData.writeInterfaceToken(kToken));
    EXPECT_EQ(OK, call(kNothing));
    EXPECT_FALSE(mAnswered);
    EXPECT_TRUE(replyStatus().isOk());
}

TEST_F(StubDeathTest, AResultCallbackThatIsNotInvokedEndsTheProcess) {
    mKinds->treeBehaviour = [](const auto&, auto) { return Void(); };
    writeEmptyTree();
    EXPECT_DEATH(call(kEchoTree), "_hidl_cb not called, but must be called once");
}

TEST_F(StubDeathTest, AResultCallbackThatIsInvokedTwiceEndsTheProcess) {
    mKinds->treeBehaviour = [](const auto& tree, auto callback) {
        callback(tree);
        callback(tree);
        return Void();
    };
    writeEmptyTree();
    EXPECT_DEATH(call(kEchoTree), "_hidl_cb called a second time");
}

TEST_F(StubDeathTest, AFailedReturnOfAnImplementationEndsTheProcess) {
    mKinds->treeBehaviour = [](const auto& tree, auto callback) -> Return<void> {
        callback(tree);
        return Status::fromExceptionCode(Status::EX_ILLEGAL_STATE, "tree");
    };
    writeEmptyTree();
    EXPECT_DEATH(call(kEchoTree), "EX_ILLEGAL_STATE.*: 'tree'");
}

TEST_F(StubDeathTest, AFailedReturnWithoutResultsEndsTheProcess) {
    mKinds->nothingBehaviour = []() -> Return<void> {
        return Status::fromExceptionCode(Status::EX_ILLEGAL_STATE, "nothing");
    };
    ASSERT_EQ(OK, mData.writeInterfaceToken(kToken));
    EXPECT_DEATH(call(kNothing), "EX_ILLEGAL_STATE.*: 'nothing'");
}

TEST_F(StubDeathTest, AFailedSingleResultEndsTheProcess) {
    mKinds->colourBehaviour = [](Colour) -> Return<Colour> {
        return Status::fromExceptionCode(Status::EX_ILLEGAL_STATE, "colour");
    };
    ASSERT_EQ(OK, mData.writeInterfaceToken(kToken));
    ASSERT_EQ(OK, mData.writeUint8(1));
    EXPECT_DEATH(call(kEchoColour), "EX_ILLEGAL_STATE.*: 'colour'");
}

TEST_F(StubTest, CallingTheImplementationItselfHasNoSuchRules) {
    int answers = 0;
    mKinds->treeBehaviour = [](const auto& tree, auto callback) {
        callback(tree);
        callback(tree);
        return Void();
    };
    EXPECT_TRUE(mKinds->echoTree(mTree, [&](const auto&) { answers++; }).isOk());
    EXPECT_EQ(2, answers);
    mKinds->treeBehaviour = [](const auto&, auto) { return Void(); };
    EXPECT_TRUE(mKinds->echoTree(mTree, [&](const auto&) { answers++; }).isOk());
    EXPECT_EQ(2, answers);
}

TEST_F(StubTest, LinksAreNotTheStubsBusiness) {
    for (const uint32_t code : {256660548u, 257250372u}) {
        EXPECT_EQ(OK, call(code));
        EXPECT_EQ(0u, mReply.dataSize());
    }
}

TEST_F(StubTest, DebugInfoTellsNothingOutsideOfDevelopment) {
    const sp<android::hidl::base::V1_0::BnHwBase> stub =
            static_cast<android::hidl::base::V1_0::BnHwBase*>(mStub->localBinder());
    ASSERT_EQ(OK, mData.writeInterfaceToken(IBase::descriptor));
    ASSERT_EQ(OK, call(257049926));
    ASSERT_TRUE(replyStatus().isOk());
    EXPECT_EQ(-1, android::hardware::details::getPidIfSharable());
    EXPECT_TRUE(mAnswered);
}

TEST_F(StubTest, AnImplementationHasOneStubAtATime) {
    EXPECT_EQ(mStub, getOrCreateCachedBinder(mKinds.get()));
    EXPECT_EQ(mStub.get(),
              android::hardware::details::gBnMap->get(mKinds.get(), nullptr).promote().get());
}

TEST(StubCacheTest, TheStubHoldsTheImplementationAndTheMapHoldsNeither) {
    sp<EchoingKinds> kinds = new EchoingKinds();
    const wp<EchoingKinds> implementation = kinds;
    const IBase* key = kinds.get();
    sp<IBinder> stub = getOrCreateCachedBinder(kinds.get());
    kinds = nullptr;
    EXPECT_NE(nullptr, implementation.promote());
    stub = nullptr;
    EXPECT_EQ(nullptr, implementation.promote());
    const auto& map = android::hardware::details::gBnMap.get();
    const auto lock = map.lock();
    for (const auto& entry : map) EXPECT_NE(key, entry.first);
}

TEST(StubCacheTest, ANewStubIsMadeWhenTheOldOneIsGone) {
    const sp<EchoingKinds> kinds = new EchoingKinds();
    sp<IBinder> first = getOrCreateCachedBinder(kinds.get());
    const wp<IBinder> old = first;
    first = nullptr;
    EXPECT_EQ(nullptr, old.promote());
    EXPECT_NE(nullptr, getOrCreateCachedBinder(kinds.get()));
}

TEST(StubCacheTest, NullHasNoStub) {
    EXPECT_EQ(nullptr, getOrCreateCachedBinder(nullptr));
    EXPECT_EQ(nullptr, android::hardware::toBinder(sp<EchoingKinds::Kinds>()));
}

TEST(StubCacheTest, TheStubIsThatOfTheMostDerivedInterface) {
    const sp<EchoingKinds::Kinds> asOldVersion = new EchoingKinds();
    const sp<IBinder> stub = android::hardware::toBinder(asOldVersion);
    EXPECT_NE(nullptr, dynamic_cast<orvo::test::kinds::V1_1::BnHwKinds*>(stub.get()));
}

TEST(StubCacheDeathTest, AnInterfaceWhoseCodeIsNotLinkedEndsTheProcess) {
    struct Unknown : public IBase {
        Return<void> interfaceDescriptor(interfaceDescriptor_cb callback) override {
            callback("orvo.unknown@1.0::IUnknown");
            return Void();
        }
    };
    const sp<IBase> unknown = new Unknown();
    EXPECT_DEATH(getOrCreateCachedBinder(unknown.get()), "orvo.unknown@1.0::IUnknown");
}

TEST(StubCacheTest, ThreadsThatAskAtOnceGetTheSameStub) {
    for (int round = 0; round < 100; round++) {
        const sp<EchoingKinds> kinds = new EchoingKinds();
        sp<IBinder> stubs[2];
        std::thread other([&] { stubs[0] = getOrCreateCachedBinder(kinds.get()); });
        stubs[1] = getOrCreateCachedBinder(kinds.get());
        other.join();
        ASSERT_EQ(stubs[0], stubs[1]) << "round " << round;
    }
}

TEST(SchedulingTest, WishesReachTheStub) {
    const sp<EchoingKinds> kinds = new EchoingKinds();
    EXPECT_TRUE(android::hardware::setMinSchedulerPolicy(kinds, SCHED_FIFO, 3));
    EXPECT_TRUE(android::hardware::setRequestingSid(kinds, true));
    const sp<IBinder> stub = getOrCreateCachedBinder(kinds.get());
    EXPECT_EQ(SCHED_FIFO, stub->localBinder()->getMinSchedulingPolicy());
    EXPECT_EQ(3, stub->localBinder()->getMinSchedulingPriority());
    EXPECT_TRUE(stub->localBinder()->isRequestingSid());
}

TEST(SchedulingTest, WithoutWishesTheStubIsOrdinary) {
    const sp<IBinder> stub = getOrCreateCachedBinder(sp<EchoingKinds>(new EchoingKinds()).get());
    EXPECT_EQ(SCHED_NORMAL, stub->localBinder()->getMinSchedulingPolicy());
    EXPECT_EQ(0, stub->localBinder()->getMinSchedulingPriority());
    EXPECT_FALSE(stub->localBinder()->isRequestingSid());
}

TEST(SchedulingTest, PoliciesAndPrioritiesHaveLimits) {
    using android::hardware::setMinSchedulerPolicy;
    const sp<IBase> kinds = new EchoingKinds();
    for (const int priority : {-20, 19}) {
        EXPECT_TRUE(setMinSchedulerPolicy(kinds, SCHED_NORMAL, priority));
    }
    for (const int priority : {-21, 20}) {
        EXPECT_FALSE(setMinSchedulerPolicy(kinds, SCHED_NORMAL, priority));
    }
    for (const int policy : {SCHED_FIFO, SCHED_RR}) {
        EXPECT_TRUE(setMinSchedulerPolicy(kinds, policy, 1));
        EXPECT_TRUE(setMinSchedulerPolicy(kinds, policy, 99));
        EXPECT_FALSE(setMinSchedulerPolicy(kinds, policy, 0));
        EXPECT_FALSE(setMinSchedulerPolicy(kinds, policy, 100));
    }
    EXPECT_FALSE(setMinSchedulerPolicy(kinds, 77, 1));
}

}  // namespace
