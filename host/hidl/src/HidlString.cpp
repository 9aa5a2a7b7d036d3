// SPDX-License-Identifier: Apache-2.0
// hidl_string: ownership of its text, and comparisons.

#include <hidl/HidlSupport.h>

#include <cstring>
#include <string_view>
#include <utility>

namespace android {
namespace hardware {

namespace {
// Where empty strings point, so that c_str() is never null. Not owned by any of them.
constexpr char kEmpty[] = "";
}  // namespace

hidl_string::hidl_string() : mBuffer(kEmpty), mSize(0), mOwnsBuffer(false) {
    static_assert(offsetof(hidl_string, mBuffer) == kOffsetOfBuffer, "wrong offset");
    static_assert(sizeof(hidl_string) == 16, "wrong size");
}

hidl_string::hidl_string(const char* text) : hidl_string() {
    if (text != nullptr) copyFrom(text, strlen(text));
}

hidl_string::hidl_string(const char* text, size_t length) : hidl_string() {
    copyFrom(text, length);
}

hidl_string::hidl_string(const std::string& text) : hidl_string() {
    copyFrom(text.data(), text.size());
}

hidl_string::hidl_string(const hidl_string& other) : hidl_string() {
    copyFrom(other.c_str(), other.size());
}

hidl_string::hidl_string(hidl_string&& other) noexcept : hidl_string() {
    swap(other);
}

hidl_string::~hidl_string() {
    if (mOwnsBuffer) delete[] c_str();
}

// Assignment goes by way of a copy, so that a string may be assigned a part of itself.
hidl_string& hidl_string::operator=(const char* text) {
    return *this = hidl_string(text);
}

hidl_string& hidl_string::operator=(const std::string& text) {
    return *this = hidl_string(text);
}

hidl_string& hidl_string::operator=(const hidl_string& other) {
    return *this = hidl_string(other);
}

hidl_string& hidl_string::operator=(hidl_string&& other) noexcept {
    hidl_string taken(std::move(other));
    swap(taken);
    return *this;
}

hidl_string::operator std::string() const {
    return std::string(c_str(), size());
}

void hidl_string::clear() {
    hidl_string empty;
    swap(empty);
}

void hidl_string::setToExternal(const char* data, size_t size) {
    if (size >= UINT32_MAX) details::logAlwaysFatal("hidl_string is limited to 2^32 - 2 bytes");
    if (data == nullptr || data[size] != '\0') {
        details::logAlwaysFatal("External text for a hidl_string does not end with a NUL");
    }
    clear();
    mBuffer = data;
    mSize = static_cast<uint32_t>(size);
}

// Only for a string that owns nothing yet.
void hidl_string::copyFrom(const char* data, size_t size) {
    if (size == 0) return;
    if (size >= UINT32_MAX) details::logAlwaysFatal("hidl_string is limited to 2^32 - 2 bytes");
    char* copy = new char[size + 1];
    memcpy(copy, data, size);
    copy[size] = '\0';
    mBuffer = copy;
    mSize = static_cast<uint32_t>(size);
    mOwnsBuffer = true;
}

void hidl_string::swap(hidl_string& other) noexcept {
    std::swap(mBuffer, other.mBuffer);
    std::swap(mSize, other.mSize);
    std::swap(mOwnsBuffer, other.mOwnsBuffer);
}

bool operator==(const hidl_string& left, const hidl_string& right) {
    return left == right.c_str();
}
bool operator!=(const hidl_string& left, const hidl_string& right) {
    return left != right.c_str();
}
bool operator<(const hidl_string& left, const hidl_string& right) {
    return left < right.c_str();
}
bool operator<=(const hidl_string& left, const hidl_string& right) {
    return left <= right.c_str();
}
bool operator>(const hidl_string& left, const hidl_string& right) {
    return left > right.c_str();
}
bool operator>=(const hidl_string& left, const hidl_string& right) {
    return left >= right.c_str();
}

bool operator==(const hidl_string& left, const char* right) {
    return strcmp(left.c_str(), right) == 0;
}
bool operator!=(const hidl_string& left, const char* right) {
    return strcmp(left.c_str(), right) != 0;
}
bool operator<(const hidl_string& left, const char* right) {
    return strcmp(left.c_str(), right) < 0;
}
bool operator<=(const hidl_string& left, const char* right) {
    return strcmp(left.c_str(), right) <= 0;
}
bool operator>(const hidl_string& left, const char* right) {
    return strcmp(left.c_str(), right) > 0;
}
bool operator>=(const hidl_string& left, const char* right) {
    return strcmp(left.c_str(), right) >= 0;
}

bool operator==(const char* left, const hidl_string& right) {
    return right == left;
}
bool operator!=(const char* left, const hidl_string& right) {
    return right != left;
}
bool operator<(const char* left, const hidl_string& right) {
    return right > left;
}
bool operator<=(const char* left, const hidl_string& right) {
    return right >= left;
}
bool operator>(const char* left, const hidl_string& right) {
    return right < left;
}
bool operator>=(const char* left, const hidl_string& right) {
    return right <= left;
}

std::ostream& operator<<(std::ostream& stream, const hidl_string& text) {
    return stream << std::string_view(text.c_str(), text.size());
}

}  // namespace hardware
}  // namespace android
