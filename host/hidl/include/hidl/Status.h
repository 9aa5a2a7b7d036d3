// SPDX-License-Identifier: Apache-2.0
// Status and Return: how a call ended, and the result of a method.

#pragma once

#include <stdint.h>

#include <ostream>
#include <string>

#include <hidl/HidlInternal.h>
#include <utils/Errors.h>
#include <utils/RefBase.h>
#include <utils/StrongPointer.h>

namespace android {
namespace hardware {

/** The outcome of a call: fine, an exception of the callee, or a failure on the way. A value. */
class Status final {
  public:
    enum Exception {
        EX_NONE = 0,
        EX_SECURITY = -1,
        EX_BAD_PARCELABLE = -2,
        EX_ILLEGAL_ARGUMENT = -3,
        EX_NULL_POINTER = -4,
        EX_ILLEGAL_STATE = -5,
        EX_NETWORK_MAIN_THREAD = -6,
        EX_UNSUPPORTED_OPERATION = -7,
        EX_HAS_REPLY_HEADER = -128,
        /** The call failed on the way; transactionError() says how. */
        EX_TRANSACTION_FAILED = -129,
    };

    static Status ok();
    static Status fromExceptionCode(int32_t exceptionCode);
    /** A null message is an empty one. */
    static Status fromExceptionCode(int32_t exceptionCode, const char* message);
    /** OK gives EX_NONE, anything else EX_TRANSACTION_FAILED with that error. */
    static Status fromStatusT(status_t status);

    Status() = default;

    /** EX_TRANSACTION_FAILED set this way carries FAILED_TRANSACTION. */
    void setException(int32_t exceptionCode, const char* message);
    void setFromStatusT(status_t status);

    int32_t exceptionCode() const { return mException; }
    const char* exceptionMessage() const { return mMessage.c_str(); }
    /** The error of EX_TRANSACTION_FAILED; OK for every other code. */
    status_t transactionError() const;
    bool isOk() const { return mException == EX_NONE; }

    /** For logs, e.g. "Status(EX_ILLEGAL_ARGUMENT): 'message'". */
    std::string description() const;

  private:
    Status(int32_t exceptionCode, status_t error, const char* message);

    int32_t mException = EX_NONE;
    status_t mError = OK;
    std::string mMessage;
};

std::ostream& operator<<(std::ostream& stream, const Status& status);

template <typename T>
class Return;

namespace details {

template <typename T, typename U>
Return<U> StatusOf(const Return<T>& other);

/**
 * What every Return has: a status, and whether anybody has looked at it. Destroying or overwriting
 * a failed one that nobody has looked at ends the process, since the caller would go on as if the
 * call had worked. Moved, never copied. Not thread-safe.
 */
class return_status {
  public:
    return_status() = default;
    return_status(const Status& status) : mStatus(status) {}
    return_status(const return_status&) = delete;
    return_status& operator=(const return_status&) = delete;
    /** Swaps status and mark: the source becomes what the target was. */
    return_status(return_status&& other) noexcept;
    return_status& operator=(return_status&& other) noexcept;
    ~return_status();

    /** These count as looking; assertOk ends the process for a failed call. */
    void assertOk() const;
    bool isOk() const;
    /** Counts as looking only if the answer is true. */
    bool isDeadObject() const;

    /** These do not count as looking. */
    bool isOkUnchecked() const { return mStatus.isOk(); }
    std::string description() const { return mStatus.description(); }

  protected:
    /** Counts as looking; ends the process for a failed call, which has no value. */
    void assertValue() const;

  private:
    template <typename T, typename U>
    friend Return<U> StatusOf(const Return<T>& other);

    void assertNotLost() const;

    Status mStatus;
    mutable bool mChecked = false;
};

}  // namespace details

/** What happens when a Return that is fine is destroyed without anybody having looked at it. */
enum class HidlReturnRestriction {
    /** Nothing. */
    NONE,
    /** An error is logged, with the stack. */
    ERROR_IF_UNCHECKED,
    /** The process ends. */
    FATAL_IF_UNCHECKED,
};

/** For the whole process, from any thread; NONE until set. */
void setProcessHidlReturnRestriction(HidlReturnRestriction restriction);

/** The result of a method that has one result of a plain type. */
template <typename T>
class Return : public details::return_status {
  public:
    Return(T value) : details::return_status(), mValue{value} {}
    Return(Status status) : details::return_status(status) {}

    Return(Return&&) noexcept = default;
    Return& operator=(Return&&) noexcept = default;
    ~Return() = default;

    /** The value; ends the process if the call failed. */
    operator T() const {
        assertValue();
        return mValue;
    }

    T withDefault(T value) { return isOk() ? mValue : value; }

  private:
    T mValue{};
};

/** The result of a method that gives an object, or null. */
template <typename T>
class Return<sp<T>> : public details::return_status {
  public:
    Return(sp<T> value) : details::return_status(), mValue{value} {}
    Return(T* value) : details::return_status(), mValue{value} {}
    template <typename U>
    Return(sp<U> value) : details::return_status(), mValue{value} {}
    template <typename U>
    Return(U* value) : details::return_status(), mValue{value} {}
    Return(Status status) : details::return_status(status) {}

    Return(Return&&) noexcept = default;
    Return& operator=(Return&&) noexcept = default;
    ~Return() = default;

    operator sp<T>() const {
        assertValue();
        return mValue;
    }

    sp<T> withDefault(sp<T> value) { return isOk() ? mValue : value; }

  private:
    sp<T> mValue;
};

/** The result of a method that has none, or that gives its results to a callback. */
template <>
class Return<void> : public details::return_status {
  public:
    Return() : details::return_status() {}
    Return(const Status& status) : details::return_status(status) {}

    Return(Return&&) noexcept = default;
    Return& operator=(Return&&) noexcept = default;
    ~Return() = default;
};

static inline Return<void> Void() {
    return Return<void>();
}

namespace details {

/** The failure of one call as that of another; `other` must have failed and been looked at. */
template <typename T, typename U>
Return<U> StatusOf(const Return<T>& other) {
    if (other.mStatus.isOk() || !other.mChecked) {
        logAlwaysFatal("StatusOf needs a failed status that has been looked at");
    }
    return Return<U>(other.mStatus);
}

}  // namespace details

}  // namespace hardware
}  // namespace android
