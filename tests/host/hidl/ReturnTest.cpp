// SPDX-License-Identifier: Apache-2.0
// Return: its value, and the rule that a failed one must be looked at.

#include <utility>

#include <android/log.h>
#include <gtest/gtest.h>
#include <hidl/Status.h>

#include "tests/support/CapturedLog.h"

namespace {

using namespace android;
using android::hardware::HidlReturnRestriction;
using android::hardware::Return;
using android::hardware::setProcessHidlReturnRestriction;
using android::hardware::Status;
using android::hardware::Void;
using android::hardware::details::StatusOf;
using orvo::test::CapturedLog;
using orvo::test::LogLine;

Status dead() {
    return Status::fromStatusT(DEAD_OBJECT);
}

struct Thing : public RefBase {};
struct SpecialThing : public Thing {};

TEST(ReturnTest, AValueIsGivenBack) {
    const Return<int> result = 5;
    EXPECT_TRUE(result.isOk());
    EXPECT_EQ(5, static_cast<int>(result));
}

TEST(ReturnTest, TheDefaultIsForFailures) {
    EXPECT_EQ(5, Return<int>(5).withDefault(7));
    EXPECT_EQ(7, Return<int>(dead()).withDefault(7));
    const sp<Thing> thing = new Thing();
    EXPECT_EQ(thing, Return<sp<Thing>>(thing).withDefault(nullptr));
    EXPECT_EQ(thing, Return<sp<Thing>>(dead()).withDefault(thing));
}

TEST(ReturnTest, ObjectsOfDerivedTypesAndNullAreResults) {
    const sp<SpecialThing> special = new SpecialThing();
    const Return<sp<Thing>> fromStrong = special;
    const Return<sp<Thing>> fromPointer = special.get();
    const Return<sp<Thing>> fromSame = static_cast<Thing*>(special.get());
    const Return<sp<Thing>> fromNull = nullptr;
    EXPECT_EQ(special.get(), sp<Thing>(fromStrong).get());
    EXPECT_EQ(special.get(), sp<Thing>(fromPointer).get());
    EXPECT_EQ(special.get(), sp<Thing>(fromSame).get());
    EXPECT_EQ(nullptr, sp<Thing>(fromNull).get());
}

TEST(ReturnTest, VoidIsFine) {
    EXPECT_TRUE(Void().isOk());
    EXPECT_EQ("No error", Void().description());
}

TEST(ReturnTest, ADeadObjectIsTold) {
    const Return<void> result = dead();
    EXPECT_TRUE(result.isDeadObject());
    EXPECT_FALSE(Void().isDeadObject());
    EXPECT_EQ("Status(EX_TRANSACTION_FAILED): 'DEAD_OBJECT: '", result.description());
}

// Nothing but the end of the test process can show that these are looked at.
TEST(ReturnTest, AFailureThatWasLookedAtIsHarmless) {
    { EXPECT_FALSE(Return<void>(dead()).isOk()); }
    { EXPECT_TRUE(Return<void>(dead()).isDeadObject()); }
    { EXPECT_EQ(1, Return<int>(dead()).withDefault(1)); }
    {
        Return<void> result = dead();
        EXPECT_FALSE(result.isOk());
        result = Void();
    }
}

TEST(ReturnTest, MovingSwapsStatusAndMark) {
    Return<void> source = dead();
    EXPECT_FALSE(source.isOk());
    Return<void> target(std::move(source));
    EXPECT_TRUE(source.isOkUnchecked());
    EXPECT_FALSE(target.isOkUnchecked());
    // The mark went along: destroying the target is harmless.
}

TEST(ReturnDeathTest, AFailureThatNobodyLookedAtEndsTheProcess) {
    EXPECT_DEATH({ Return<void> result = dead(); }, "DEAD_OBJECT");
    EXPECT_DEATH({ Return<int> result = dead(); }, "DEAD_OBJECT");
    EXPECT_DEATH({ Return<sp<Thing>> result = dead(); }, "DEAD_OBJECT");
    EXPECT_DEATH(
            {
                Return<void> result = Status::fromExceptionCode(Status::EX_ILLEGAL_ARGUMENT, "odd");
            },
            "Status\\(EX_ILLEGAL_ARGUMENT\\): 'odd'");
}

TEST(ReturnDeathTest, DescribingAFailureIsNotLookingAtIt) {
    EXPECT_DEATH(
            {
                Return<void> result = dead();
                result.description();
                result.isOkUnchecked();
            },
            "nobody has looked at its result");
}

TEST(ReturnDeathTest, DenyingThatTheObjectIsDeadIsNotLookingAtTheFailure) {
    EXPECT_DEATH(
            {
                Return<void> result = Status::fromStatusT(BAD_VALUE);
                result.isDeadObject();
            },
            "BAD_VALUE");
}

TEST(ReturnDeathTest, OverwritingAFailureThatNobodyLookedAtEndsTheProcess) {
    EXPECT_DEATH(
            {
                Return<void> result = dead();
                result = Void();
            },
            "DEAD_OBJECT");
}

TEST(ReturnDeathTest, AMovedFailureStillHasToBeLookedAt) {
    EXPECT_DEATH(
            {
                Return<void> source = dead();
                Return<void> target(std::move(source));
            },
            "DEAD_OBJECT");
}

TEST(ReturnDeathTest, AFailureHasNoValue) {
    EXPECT_DEATH(
            {
                const Return<int> result = dead();
                result.isOk();
                static_cast<void>(static_cast<int>(result));
            },
            "value .* was asked for");
    EXPECT_DEATH(
            {
                const Return<sp<Thing>> result = dead();
                sp<Thing> thing = result;
            },
            "value .* was asked for");
}

TEST(ReturnDeathTest, AFailureIsNotOk) {
    EXPECT_DEATH(Return<void>(dead()).assertOk(), "had to succeed");
    Void().assertOk();
}

TEST(StatusOfTest, TheFailureOfOneCallBecomesThatOfAnother) {
    const Return<bool> failed = dead();
    EXPECT_FALSE(failed.isOk());
    const Return<sp<Thing>> other = StatusOf<bool, sp<Thing>>(failed);
    EXPECT_TRUE(other.isDeadObject());
}

TEST(StatusOfDeathTest, ASuccessHasNoFailureToPassOn) {
    const Return<bool> fine = true;
    EXPECT_TRUE(fine.isOk());
    EXPECT_DEATH((StatusOf<bool, int>(fine)), "StatusOf needs a failed status");
}

TEST(StatusOfDeathTest, TheFailureMustHaveBeenLookedAt) {
    EXPECT_DEATH(
            {
                const Return<bool> failed = dead();
                (StatusOf<bool, int>(failed));
            },
            "StatusOf needs a failed status");
}

TEST(ReturnRestrictionTest, WithoutOneASuccessNeedsNoLook) {
    CapturedLog log;
    { Return<void> result = Void(); }
    EXPECT_TRUE(log.lines().empty());
}

TEST(ReturnRestrictionTest, ErrorIfUncheckedLogsAnErrorWithTheStack) {
    CapturedLog log;
    setProcessHidlReturnRestriction(HidlReturnRestriction::ERROR_IF_UNCHECKED);
    { Return<void> result = Void(); }
    const std::vector<LogLine> unchecked = log.take();
    {
        Return<void> result = Void();
        EXPECT_TRUE(result.isOk());
    }
    setProcessHidlReturnRestriction(HidlReturnRestriction::NONE);

    ASSERT_GT(unchecked.size(), 1u);
    for (const LogLine& line : unchecked) EXPECT_EQ(ANDROID_LOG_ERROR, line.priority);
    EXPECT_NE(std::string::npos, unchecked[0].text.find("must be checked"));
    EXPECT_TRUE(log.lines().empty());
}

TEST(ReturnRestrictionDeathTest, FatalIfUncheckedEndsTheProcess) {
    EXPECT_DEATH(
            {
                setProcessHidlReturnRestriction(HidlReturnRestriction::FATAL_IF_UNCHECKED);
                Return<void> result = Void();
            },
            "must be checked");
    EXPECT_EXIT(
            {
                setProcessHidlReturnRestriction(HidlReturnRestriction::FATAL_IF_UNCHECKED);
                {
                    Return<void> result = Void();
                    result.isOk();
                }
                _exit(0);
            },
            testing::ExitedWithCode(0), "");
}

TEST(ReturnRestrictionDeathTest, AFailureIsFatalUnderEveryRestriction) {
    for (const auto restriction :
         {HidlReturnRestriction::NONE, HidlReturnRestriction::ERROR_IF_UNCHECKED,
          HidlReturnRestriction::FATAL_IF_UNCHECKED}) {
        EXPECT_DEATH(
                {
                    setProcessHidlReturnRestriction(restriction);
                    Return<void> result = dead();
                },
                "DEAD_OBJECT");
    }
}

}  // namespace
