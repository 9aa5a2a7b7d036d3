// SPDX-License-Identifier: Apache-2.0
// hidl_string: text as it travels in calls. Part of hidl/HidlSupport.h.

#pragma once

#include <stddef.h>
#include <stdint.h>

#include <ostream>
#include <string>

#include <hidl/HidlInternal.h>

namespace android {
namespace hardware {

/**
 * Sixteen bytes, the same in every process. c_str() is never null and always ends with a NUL,
 * which size() does not count. Copies are deep; a string that was moved from is empty. Text of
 * 2^32 - 1 bytes or more ends the process.
 */
class hidl_string {
  public:
    hidl_string();
    /** Null gives an empty string. */
    hidl_string(const char* text);
    hidl_string(const char* text, size_t length);
    hidl_string(const std::string& text);
    hidl_string(const hidl_string& other);
    hidl_string(hidl_string&& other) noexcept;
    ~hidl_string();

    hidl_string& operator=(const char* text);
    hidl_string& operator=(const std::string& text);
    hidl_string& operator=(const hidl_string& other);
    hidl_string& operator=(hidl_string&& other) noexcept;

    operator std::string() const;

    const char* c_str() const { return mBuffer; }
    size_t size() const { return mSize; }
    bool empty() const { return mSize == 0; }
    void clear();

    /**
     * Shows text that somebody else owns and keeps alive. Ends the process if there is no NUL at
     * data[size].
     */
    void setToExternal(const char* data, size_t size);

    static constexpr size_t kOffsetOfBuffer = 0;

  private:
    void copyFrom(const char* data, size_t size);
    void swap(hidl_string& other) noexcept;

    details::hidl_pointer<const char> mBuffer;
    uint32_t mSize;
    bool mOwnsBuffer;
    // Sent to other processes as it is in memory: without a name, these would be what was there.
    [[maybe_unused]] uint8_t mPad[3] = {};
};

/** All comparisons stop at the first NUL. */
bool operator==(const hidl_string& left, const hidl_string& right);
bool operator!=(const hidl_string& left, const hidl_string& right);
bool operator<(const hidl_string& left, const hidl_string& right);
bool operator<=(const hidl_string& left, const hidl_string& right);
bool operator>(const hidl_string& left, const hidl_string& right);
bool operator>=(const hidl_string& left, const hidl_string& right);

bool operator==(const hidl_string& left, const char* right);
bool operator!=(const hidl_string& left, const char* right);
bool operator<(const hidl_string& left, const char* right);
bool operator<=(const hidl_string& left, const char* right);
bool operator>(const hidl_string& left, const char* right);
bool operator>=(const hidl_string& left, const char* right);

bool operator==(const char* left, const hidl_string& right);
bool operator!=(const char* left, const hidl_string& right);
bool operator<(const char* left, const hidl_string& right);
bool operator<=(const char* left, const hidl_string& right);
bool operator>(const char* left, const hidl_string& right);
bool operator>=(const char* left, const hidl_string& right);

std::ostream& operator<<(std::ostream& stream, const hidl_string& text);

}  // namespace hardware
}  // namespace android
