// SPDX-License-Identifier: Apache-2.0
// Status: codes, errors and descriptions.

#include <sstream>

#include <gtest/gtest.h>
#include <hidl/Status.h>

namespace {

using namespace android;
using android::hardware::Status;

TEST(StatusTest, ANewStatusIsFine) {
    for (const Status& status : {Status(), Status::ok(), Status::fromStatusT(OK)}) {
        EXPECT_TRUE(status.isOk());
        EXPECT_EQ(Status::EX_NONE, status.exceptionCode());
        EXPECT_EQ(OK, status.transactionError());
        EXPECT_STREQ("", status.exceptionMessage());
        EXPECT_EQ("No error", status.description());
    }
}

TEST(StatusTest, AnExceptionCarriesItsMessageAndNoError) {
    const Status status = Status::fromExceptionCode(Status::EX_ILLEGAL_ARGUMENT, "msg");
    EXPECT_FALSE(status.isOk());
    EXPECT_EQ(Status::EX_ILLEGAL_ARGUMENT, status.exceptionCode());
    EXPECT_STREQ("msg", status.exceptionMessage());
    EXPECT_EQ(OK, status.transactionError());
    EXPECT_EQ("Status(EX_ILLEGAL_ARGUMENT): 'msg'", status.description());
}

TEST(StatusTest, AFailedCallCarriesItsError) {
    const Status status = Status::fromStatusT(DEAD_OBJECT);
    EXPECT_FALSE(status.isOk());
    EXPECT_EQ(Status::EX_TRANSACTION_FAILED, status.exceptionCode());
    EXPECT_EQ(DEAD_OBJECT, status.transactionError());
    EXPECT_EQ("Status(EX_TRANSACTION_FAILED): 'DEAD_OBJECT: '", status.description());
}

TEST(StatusTest, AFailedCallWithoutAnErrorHasTheGeneralOne) {
    const Status status = Status::fromExceptionCode(Status::EX_TRANSACTION_FAILED, "msg");
    EXPECT_EQ(FAILED_TRANSACTION, status.transactionError());
    EXPECT_EQ("Status(EX_TRANSACTION_FAILED): 'FAILED_TRANSACTION: msg'", status.description());
}

TEST(StatusTest, EveryExceptionHasAName) {
    const std::pair<int32_t, const char*> names[] = {
            {Status::EX_SECURITY, "EX_SECURITY"},
            {Status::EX_BAD_PARCELABLE, "EX_BAD_PARCELABLE"},
            {Status::EX_ILLEGAL_ARGUMENT, "EX_ILLEGAL_ARGUMENT"},
            {Status::EX_NULL_POINTER, "EX_NULL_POINTER"},
            {Status::EX_ILLEGAL_STATE, "EX_ILLEGAL_STATE"},
            {Status::EX_NETWORK_MAIN_THREAD, "EX_NETWORK_MAIN_THREAD"},
            {Status::EX_UNSUPPORTED_OPERATION, "EX_UNSUPPORTED_OPERATION"},
            {Status::EX_HAS_REPLY_HEADER, "EX_HAS_REPLY_HEADER"},
            {-55, "-55"},
    };
    for (const auto& [code, name] : names) {
        EXPECT_EQ(std::string("Status(") + name + "): ''",
                  Status::fromExceptionCode(code).description());
    }
}

TEST(StatusTest, ErrorCodesAreThoseOfTheCallContract) {
    EXPECT_EQ(-1, Status::EX_SECURITY);
    EXPECT_EQ(-2, Status::EX_BAD_PARCELABLE);
    EXPECT_EQ(-3, Status::EX_ILLEGAL_ARGUMENT);
    EXPECT_EQ(-4, Status::EX_NULL_POINTER);
    EXPECT_EQ(-5, Status::EX_ILLEGAL_STATE);
    EXPECT_EQ(-6, Status::EX_NETWORK_MAIN_THREAD);
    EXPECT_EQ(-7, Status::EX_UNSUPPORTED_OPERATION);
    EXPECT_EQ(-128, Status::EX_HAS_REPLY_HEADER);
    EXPECT_EQ(-129, Status::EX_TRANSACTION_FAILED);
}

TEST(StatusTest, ErrorsHaveNamesOrANumberAndAText) {
    EXPECT_EQ("OK", statusToString(OK));
    EXPECT_EQ("UNKNOWN_ERROR", statusToString(UNKNOWN_ERROR));
    EXPECT_EQ("BAD_TYPE", statusToString(BAD_TYPE));
    EXPECT_EQ("UNKNOWN_TRANSACTION", statusToString(UNKNOWN_TRANSACTION));
    EXPECT_EQ("UNEXPECTED_NULL", statusToString(UNEXPECTED_NULL));
    EXPECT_EQ("-7 (Argument list too long)", statusToString(-E2BIG));
}

TEST(StatusTest, ASetStatusForgetsWhatItWas) {
    Status status = Status::fromExceptionCode(Status::EX_SECURITY, "msg");
    status.setFromStatusT(DEAD_OBJECT);
    EXPECT_EQ("Status(EX_TRANSACTION_FAILED): 'DEAD_OBJECT: '", status.description());
    status.setException(Status::EX_NULL_POINTER, nullptr);
    EXPECT_EQ("Status(EX_NULL_POINTER): ''", status.description());
    EXPECT_EQ(OK, status.transactionError());
    status.setFromStatusT(OK);
    EXPECT_TRUE(status.isOk());
}

TEST(StatusTest, StreamsPrintTheDescription) {
    std::ostringstream stream;
    stream << Status::fromExceptionCode(Status::EX_ILLEGAL_STATE, "closed");
    EXPECT_EQ("Status(EX_ILLEGAL_STATE): 'closed'", stream.str());
}

}  // namespace
