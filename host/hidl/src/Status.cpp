// SPDX-License-Identifier: Apache-2.0
// Status, and the rule that a failed Return must be looked at.

#define LOG_TAG "HidlStatus"

#include <hidl/Status.h>

#include <atomic>
#include <utility>

#include <log/log.h>
#include <utils/CallStack.h>

namespace android {
namespace hardware {

namespace {

std::atomic<HidlReturnRestriction> gReturnRestriction{HidlReturnRestriction::NONE};

std::string exceptionToString(int32_t exceptionCode) {
    switch (exceptionCode) {
        case Status::EX_NONE:
            return "EX_NONE";
        case Status::EX_SECURITY:
            return "EX_SECURITY";
        case Status::EX_BAD_PARCELABLE:
            return "EX_BAD_PARCELABLE";
        case Status::EX_ILLEGAL_ARGUMENT:
            return "EX_ILLEGAL_ARGUMENT";
        case Status::EX_NULL_POINTER:
            return "EX_NULL_POINTER";
        case Status::EX_ILLEGAL_STATE:
            return "EX_ILLEGAL_STATE";
        case Status::EX_NETWORK_MAIN_THREAD:
            return "EX_NETWORK_MAIN_THREAD";
        case Status::EX_UNSUPPORTED_OPERATION:
            return "EX_UNSUPPORTED_OPERATION";
        case Status::EX_HAS_REPLY_HEADER:
            return "EX_HAS_REPLY_HEADER";
        case Status::EX_TRANSACTION_FAILED:
            return "EX_TRANSACTION_FAILED";
        default:
            return std::to_string(exceptionCode);
    }
}

}  // namespace

Status::Status(int32_t exceptionCode, status_t error, const char* message)
    : mException(exceptionCode), mError(error), mMessage(message == nullptr ? "" : message) {}

Status Status::ok() {
    return Status();
}

Status Status::fromExceptionCode(int32_t exceptionCode) {
    return fromExceptionCode(exceptionCode, "");
}

Status Status::fromExceptionCode(int32_t exceptionCode, const char* message) {
    return Status(exceptionCode, exceptionCode == EX_TRANSACTION_FAILED ? FAILED_TRANSACTION : OK,
                  message);
}

Status Status::fromStatusT(status_t status) {
    return Status(status == OK ? EX_NONE : EX_TRANSACTION_FAILED, status, "");
}

void Status::setException(int32_t exceptionCode, const char* message) {
    *this = fromExceptionCode(exceptionCode, message);
}

void Status::setFromStatusT(status_t status) {
    *this = fromStatusT(status);
}

status_t Status::transactionError() const {
    return mException == EX_TRANSACTION_FAILED ? mError : OK;
}

std::string Status::description() const {
    if (isOk()) return "No error";
    std::string text = "Status(" + exceptionToString(mException) + "): '";
    if (mException == EX_TRANSACTION_FAILED) text += statusToString(mError) + ": ";
    return text + mMessage + "'";
}

std::ostream& operator<<(std::ostream& stream, const Status& status) {
    return stream << status.description();
}

void setProcessHidlReturnRestriction(HidlReturnRestriction restriction) {
    gReturnRestriction = restriction;
}

namespace details {

return_status::return_status(return_status&& other) noexcept {
    *this = std::move(other);
}

return_status& return_status::operator=(return_status&& other) noexcept {
    assertNotLost();
    std::swap(mStatus, other.mStatus);
    std::swap(mChecked, other.mChecked);
    return *this;
}

return_status::~return_status() {
    assertNotLost();
    if (mChecked) return;

    const HidlReturnRestriction restriction = gReturnRestriction;
    if (restriction == HidlReturnRestriction::NONE) return;
    if (restriction == HidlReturnRestriction::ERROR_IF_UNCHECKED) {
        ALOGE("Nobody has looked at the result of a HIDL call, which must be checked: isOk() was "
              "not called.");
        CallStack stack;
        stack.update();
        stack.log(LOG_TAG, ANDROID_LOG_ERROR);
        return;
    }
    logAlwaysFatal(
            "Nobody has looked at the result of a HIDL call, which must be checked: isOk() "
            "was not called.");
}

void return_status::assertOk() const {
    if (isOk()) return;
    logAlwaysFatal(("A HIDL call that had to succeed has failed: " + description()).c_str());
}

bool return_status::isOk() const {
    mChecked = true;
    return isOkUnchecked();
}

bool return_status::isDeadObject() const {
    const bool dead = mStatus.transactionError() == DEAD_OBJECT;
    if (dead) mChecked = true;
    return dead;
}

void return_status::assertValue() const {
    if (isOk()) return;
    logAlwaysFatal(
            ("The value of a HIDL call that has failed was asked for: " + description()).c_str());
}

void return_status::assertNotLost() const {
    if (mChecked || isOkUnchecked()) return;
    logAlwaysFatal(("A HIDL call has failed and nobody has looked at its result; check isOk(). "
                    "Inside a service this may be a result that it returned itself: " +
                    description())
                           .c_str());
}

}  // namespace details
}  // namespace hardware
}  // namespace android
