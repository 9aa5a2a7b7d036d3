// SPDX-License-Identifier: Apache-2.0
// Wrappers around objects of the same process: what they forward and what they run later.

#include <future>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <hidl/HidlTransportSupport.h>
#include <orvo/test/kinds/1.0/BsKinds.h>
#include <orvo/test/kinds/1.1/BpHwKinds.h>
#include <orvo/test/kinds/1.1/BsKinds.h>

#include "tests/host/hidl/EchoingKinds.h"
#include "tests/host/hidl/LoopBackBinder.h"

namespace {

using namespace android;
using android::hardware::hidl_death_recipient;
using android::hardware::Return;
using android::hardware::Status;
using android::hardware::Void;
using android::hardware::details::wrapPassthrough;
using android::hardware::details::wrapPassthroughInternal;
using android::hidl::base::V1_0::IBase;
using orvo::test::EchoingKinds;
using orvo::test::LoopBackBinder;
using orvo::test::kinds::V1_0::Tree;
using OldKinds = orvo::test::kinds::V1_0::IKinds;
using orvo::test::kinds::V1_1::BsKinds;
using orvo::test::kinds::V1_1::IKinds;

class WrapperTest : public testing::Test {
  protected:
    const sp<EchoingKinds> mKinds = new EchoingKinds();
    const sp<IKinds> mWrapper = wrapPassthrough(sp<IKinds>(mKinds));
};

using WrapperDeathTest = WrapperTest;

TEST_F(WrapperTest, TheWrapperIsThatOfTheMostDerivedInterfaceOfTheChain) {
    const sp<OldKinds> wrapper = wrapPassthrough(sp<OldKinds>(mKinds));
    EXPECT_NE(nullptr, dynamic_cast<BsKinds*>(wrapper.get()));
    EXPECT_FALSE(wrapper->isRemote());
}

TEST_F(WrapperTest, NullAndRemoteObjectsStayWhatTheyAre) {
    EXPECT_EQ(nullptr, wrapPassthroughInternal(nullptr));
    const sp<IBase> proxy = new orvo::test::kinds::V1_1::BpHwKinds(new LoopBackBinder(nullptr));
    EXPECT_EQ(proxy, wrapPassthroughInternal(proxy));
}

TEST_F(WrapperTest, AnObjectThatDoesNotTellItsChainIsNotWrapped) {
    mKinds->identityStatus = Status::fromStatusT(DEAD_OBJECT);
    EXPECT_EQ(nullptr, wrapPassthroughInternal(mKinds));
}

TEST_F(WrapperTest, TwoWayMethodsRunOnTheCallersThread) {
    std::thread::id thread;
    mKinds->nothingBehaviour = [&] {
        thread = std::this_thread::get_id();
        return Void();
    };
    EXPECT_TRUE(mWrapper->nothing().isOk());
    EXPECT_EQ(std::this_thread::get_id(), thread);
}

TEST_F(WrapperTest, ResultsAreForwarded) {
    const Tree tree = {true, {}, {"word"}, {}};
    bool called = false;
    EXPECT_TRUE(mWrapper->echoTree(tree, [&](const Tree& same) { called = same == tree; }).isOk());
    EXPECT_TRUE(called);
    EXPECT_EQ(1u, static_cast<uint32_t>(mWrapper->version()));
}

TEST_F(WrapperTest, ANullResultCallbackIsRefused) {
    const Return<void> result = mWrapper->echoTree({}, nullptr);
    EXPECT_FALSE(result.isOk());
    EXPECT_EQ("Status(EX_ILLEGAL_ARGUMENT): 'Null synchronous callback passed.'",
              result.description());
}

TEST_F(WrapperTest, FailuresOfTheImplementationAreForwarded) {
    mKinds->nothingBehaviour = []() -> Return<void> {
        return Status::fromExceptionCode(Status::EX_ILLEGAL_STATE, "closed");
    };
    const Return<void> result = mWrapper->nothing();
    EXPECT_FALSE(result.isOk());
    EXPECT_EQ("Status(EX_ILLEGAL_STATE): 'closed'", result.description());
}

TEST_F(WrapperTest, LocalArgumentsAndResultsAreWrapped) {
    const sp<EchoingKinds> argument = new EchoingKinds();
    const sp<OldKinds> result = mWrapper->echoKinds(argument);
    EXPECT_NE(nullptr, dynamic_cast<BsKinds*>(mKinds->lastKinds.get()));
    EXPECT_NE(nullptr, dynamic_cast<BsKinds*>(result.get()));
    EXPECT_NE(result.get(), mKinds->lastKinds.get());
}

TEST_F(WrapperTest, AnArgumentThatCannotBeWrappedFailsTheCall) {
    const sp<EchoingKinds> argument = new EchoingKinds();
    argument->identityStatus = Status::fromStatusT(DEAD_OBJECT);
    const Return<sp<OldKinds>> result = mWrapper->echoKinds(argument);
    EXPECT_FALSE(result.isOk());
    EXPECT_EQ(
            "Status(EX_TRANSACTION_FAILED): "
            "'FAILED_TRANSACTION: Cannot wrap passthrough interface.'",
            result.description());
}

TEST_F(WrapperTest, OnewayMethodsCopyTheirArgumentsAndRunInOrderElsewhere) {
    std::vector<std::string> notes;
    std::promise<void> gate;
    std::promise<void> done;
    std::shared_future<void> opened = gate.get_future().share();
    std::thread::id thread;
    mKinds->noteBehaviour = [&](const std::string& text) {
        opened.wait();
        thread = std::this_thread::get_id();
        notes.push_back(text);
        if (notes.size() == 2) done.set_value();
        return Void();
    };
    {
        // Both calls are back before the first one has run, and their arguments are gone.
        std::string text = "first";
        EXPECT_TRUE(mWrapper->note(text).isOk());
        text = "second";
        EXPECT_TRUE(mWrapper->note(text).isOk());
    }
    gate.set_value();
    done.get_future().wait();
    EXPECT_EQ((std::vector<std::string>{"first", "second"}), notes);
    EXPECT_NE(std::this_thread::get_id(), thread);
}

TEST_F(WrapperTest, ThreeThousandOnewayCallsMayWait) {
    std::promise<void> running;
    std::promise<void> gate;
    std::promise<void> done;
    std::shared_future<void> opened = gate.get_future().share();
    int ran = 0;
    mKinds->noteBehaviour = [&](const std::string&) {
        if (ran++ == 0) {
            running.set_value();
            opened.wait();
        }
        if (ran == 3001) done.set_value();
        return Void();
    };
    EXPECT_TRUE(mWrapper->note("runs").isOk());
    running.get_future().wait();
    for (int i = 0; i < 3000; i++) ASSERT_TRUE(mWrapper->note("waits").isOk());
    const Return<void> result = mWrapper->note("too many");
    EXPECT_FALSE(result.isOk());
    EXPECT_EQ(
            "Status(EX_TRANSACTION_FAILED): 'FAILED_TRANSACTION: "
            "Passthrough oneway function queue exceeds maximum size.'",
            result.description());
    gate.set_value();
    done.get_future().wait();
}

TEST_F(WrapperDeathTest, AFailedOnewayCallEndsTheProcess) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_DEATH(
            {
                std::promise<void> never;
                mKinds->noteBehaviour = [](const std::string&) -> Return<void> {
                    return Status::fromExceptionCode(Status::EX_ILLEGAL_STATE, "note");
                };
                mWrapper->note("text").isOk();
                never.get_future().wait();
            },
            "EX_ILLEGAL_STATE.*: 'note'");
}

TEST_F(WrapperTest, LinksGoToTheImplementation) {
    struct Recipient : public hidl_death_recipient {
        void serviceDied(uint64_t, const wp<IBase>&) override {}
    };
    EXPECT_TRUE(mWrapper->linkToDeath(new Recipient(), 1));
    EXPECT_FALSE(mWrapper->linkToDeath(nullptr, 1));
    EXPECT_FALSE(mWrapper->unlinkToDeath(nullptr));
}

TEST_F(WrapperTest, InstrumentationIsReadAgainAndStaysOff) {
    EXPECT_TRUE(mWrapper->setHALInstrumentation().isOk());
    EXPECT_FALSE(static_cast<BsKinds*>(mWrapper.get())->isInstrumentationEnabled());
    EXPECT_TRUE(static_cast<BsKinds*>(mWrapper.get())->getInstrumentationCallbacks().empty());
}

}  // namespace
