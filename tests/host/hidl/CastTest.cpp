// SPDX-License-Identifier: Apache-2.0
// Casts between interfaces, and whether two interfaces are the same object.

#include <gtest/gtest.h>
#include <hidl/HidlTransportSupport.h>
#include <orvo/test/kinds/1.0/BnHwKinds.h>
#include <orvo/test/kinds/1.0/BpHwKinds.h>
#include <orvo/test/kinds/1.1/BpHwKinds.h>

#include "tests/host/hidl/EchoingKinds.h"
#include "tests/host/hidl/LoopBackBinder.h"

namespace {

using namespace android;
using android::hardware::fromBinder;
using android::hardware::getOrCreateCachedBinder;
using android::hardware::IBinder;
using android::hardware::interfacesEqual;
using android::hardware::Return;
using android::hardware::Status;
using android::hardware::details::canCastInterface;
using android::hardware::details::getDescriptor;
using android::hidl::base::V1_0::BpHwBase;
using android::hidl::base::V1_0::IBase;
using orvo::test::EchoingKinds;
using orvo::test::LoopBackBinder;
using OldKinds = orvo::test::kinds::V1_0::IKinds;
using NewKinds = orvo::test::kinds::V1_1::IKinds;
using orvo::test::kinds::V1_0::BnHwKinds;
using orvo::test::kinds::V1_0::BpHwKinds;

constexpr char kNotThere[] = "orvo.test.kinds@2.0::IKinds";
constexpr uint32_t kInterfaceChain = 256067662;

class CastTest : public testing::Test {
  protected:
    const sp<EchoingKinds> mKinds = new EchoingKinds();
    const sp<LoopBackBinder> mBinder = new LoopBackBinder(getOrCreateCachedBinder(mKinds.get()));
    const sp<IBase> mProxy = new BpHwBase(mBinder);
};

TEST_F(CastTest, AnObjectIsWhatItsChainSays) {
    EXPECT_TRUE(canCastInterface(mKinds.get(), NewKinds::descriptor));
    EXPECT_TRUE(canCastInterface(mKinds.get(), OldKinds::descriptor));
    EXPECT_TRUE(canCastInterface(mKinds.get(), IBase::descriptor));
    EXPECT_FALSE(canCastInterface(mKinds.get(), kNotThere));
}

TEST_F(CastTest, NullIsNothing) {
    EXPECT_FALSE(canCastInterface(nullptr, IBase::descriptor));
    EXPECT_FALSE(canCastInterface(nullptr, IBase::descriptor, true));
}

TEST_F(CastTest, EveryObjectIsABaseWithoutBeingAsked) {
    EXPECT_TRUE(canCastInterface(mProxy.get(), IBase::descriptor, true));
    EXPECT_TRUE(mBinder->calls.empty());
}

TEST_F(CastTest, AFailedQuestionIsANoOrAnError) {
    mBinder->errors[kInterfaceChain] = DEAD_OBJECT;
    const Return<bool> answer = canCastInterface(mProxy.get(), NewKinds::descriptor);
    EXPECT_TRUE(answer.isOk());
    EXPECT_FALSE(answer);
    const Return<bool> error = canCastInterface(mProxy.get(), NewKinds::descriptor, true);
    EXPECT_TRUE(error.isDeadObject());
}

TEST_F(CastTest, CastingNullGivesNull) {
    const Return<sp<NewKinds>> result = NewKinds::castFrom(sp<IBase>(), true);
    EXPECT_TRUE(result.isOk());
    EXPECT_EQ(nullptr, sp<NewKinds>(result));
}

TEST_F(CastTest, CastingALocalObjectGivesThatObject) {
    const sp<IBase> base = mKinds;
    const sp<NewKinds> cast = NewKinds::castFrom(base);
    EXPECT_EQ(mKinds.get(), cast.get());
    const sp<OldKinds> old = OldKinds::castFrom(base);
    EXPECT_EQ(static_cast<OldKinds*>(mKinds.get()), old.get());
    EXPECT_EQ(mKinds.get(), sp<IBase>(IBase::castFrom(base)).get());
}

TEST_F(CastTest, CastingARemoteObjectGivesANewProxyAndAsksOnce) {
    const sp<NewKinds> cast = NewKinds::castFrom(mProxy);
    ASSERT_NE(nullptr, cast);
    EXPECT_TRUE(cast->isRemote());
    EXPECT_EQ(mBinder, getOrCreateCachedBinder(cast.get()));
    ASSERT_EQ(1u, mBinder->calls.size());
    EXPECT_EQ(kInterfaceChain, mBinder->calls[0].code);
    EXPECT_NE(cast.get(), sp<NewKinds>(NewKinds::castFrom(mProxy)).get());
}

TEST_F(CastTest, CastingToWhatAnObjectIsNotGivesNull) {
    struct Other : public IBase {};
    const sp<IBase> other = new Other();
    const Return<sp<NewKinds>> result = NewKinds::castFrom(other, true);
    EXPECT_TRUE(result.isOk());
    EXPECT_EQ(nullptr, sp<NewKinds>(result));
}

TEST_F(CastTest, CastingADeadObjectGivesNullOrAnError) {
    mBinder->errors[kInterfaceChain] = DEAD_OBJECT;
    EXPECT_EQ(nullptr, sp<NewKinds>(NewKinds::castFrom(mProxy)));
    EXPECT_TRUE(NewKinds::castFrom(mProxy, true).isDeadObject());
}

TEST_F(CastTest, TheDescriptorIsEmptyIfNobodyAnswers) {
    EXPECT_EQ("orvo.test.kinds@1.1::IKinds", getDescriptor(mProxy.get()));
    EXPECT_EQ("orvo.test.kinds@1.1::IKinds", getDescriptor(mKinds.get()));
    EXPECT_EQ("", getDescriptor(nullptr));
    mKinds->identityStatus = Status::fromStatusT(DEAD_OBJECT);
    EXPECT_EQ("", getDescriptor(mKinds.get()));
}

TEST_F(CastTest, InterfacesAreEqualIfTheyAreTheSameObject) {
    const sp<IBase> other = new EchoingKinds();
    EXPECT_TRUE(interfacesEqual(mKinds, mKinds));
    EXPECT_FALSE(interfacesEqual(mKinds, other));
    EXPECT_TRUE(interfacesEqual(nullptr, nullptr));
    EXPECT_FALSE(interfacesEqual(nullptr, mKinds));
    EXPECT_FALSE(interfacesEqual(mProxy, nullptr));
    EXPECT_FALSE(interfacesEqual(mProxy, mKinds));
}

TEST_F(CastTest, ProxiesAreEqualIfTheyCallTheSameBinder) {
    EXPECT_TRUE(interfacesEqual(mProxy, new BpHwBase(mBinder)));
    EXPECT_TRUE(interfacesEqual(mProxy, sp<NewKinds>(NewKinds::castFrom(mProxy))));
    EXPECT_FALSE(interfacesEqual(mProxy, new BpHwBase(new LoopBackBinder(nullptr))));
}

TEST_F(CastTest, ALocalBinderBecomesItsImplementation) {
    const sp<IBinder> stub = getOrCreateCachedBinder(mKinds.get());
    const sp<OldKinds> back = fromBinder<OldKinds, BpHwKinds, BnHwKinds>(stub);
    EXPECT_EQ(static_cast<OldKinds*>(mKinds.get()), back.get());
}

TEST_F(CastTest, ALocalBinderOfAnotherInterfaceBecomesNull) {
    struct Other : public IBase {};
    const sp<IBase> other = new Other();
    const sp<IBinder> stub = getOrCreateCachedBinder(other.get());
    EXPECT_EQ(nullptr, (fromBinder<OldKinds, BpHwKinds, BnHwKinds>(stub)));
}

TEST_F(CastTest, ARemoteBinderBecomesANewProxyWithoutBeingAsked) {
    const sp<OldKinds> first = fromBinder<OldKinds, BpHwKinds, BnHwKinds>(mBinder);
    const sp<OldKinds> second = fromBinder<OldKinds, BpHwKinds, BnHwKinds>(mBinder);
    EXPECT_TRUE(first->isRemote());
    EXPECT_NE(first.get(), second.get());
    EXPECT_TRUE(mBinder->calls.empty());
}

TEST_F(CastTest, ANullBinderBecomesNull) {
    EXPECT_EQ(nullptr, (fromBinder<OldKinds, BpHwKinds, BnHwKinds>(nullptr)));
}

TEST_F(CastTest, WishesForRemoteObjectsAreRefused) {
    EXPECT_FALSE(android::hardware::setMinSchedulerPolicy(mProxy, SCHED_NORMAL, 0));
    EXPECT_FALSE(android::hardware::setRequestingSid(mProxy, true));
}

}  // namespace
