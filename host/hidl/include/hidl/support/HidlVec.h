// SPDX-License-Identifier: Apache-2.0
// hidl_vec: a sequence as it travels in calls. Part of hidl/HidlSupport.h.

#pragma once

#include <stddef.h>
#include <stdint.h>

#include <algorithm>
#include <initializer_list>
#include <iterator>
#include <type_traits>
#include <vector>

#include <hidl/HidlInternal.h>
#include <hidl/support/HidlVecIterator.h>

namespace android {
namespace hardware {

/**
 * Sixteen bytes, the same in every process. Owned storage comes from new T[]. More than 2^32 - 1
 * elements end the process.
 *
 * A vector that was moved from still shows the elements, which now belong to the other one: it may
 * be destroyed or assigned to, but it must not be read once the other one has changed.
 */
template <typename T>
class hidl_vec {
  public:
    using value_type = T;
    using iterator = details::HidlVecIterator<T>;
    using const_iterator = details::HidlVecIterator<const T>;

    hidl_vec() : mSize(0), mOwnsBuffer(false) {}
    /** Value-initialised elements. */
    hidl_vec(size_t size) : hidl_vec() { resize(size); }
    hidl_vec(const hidl_vec& other) : hidl_vec() { copyFrom(other.begin(), other.mSize); }
    hidl_vec(hidl_vec&& other) noexcept : hidl_vec() { *this = std::move(other); }
    hidl_vec(std::initializer_list<T> list) : hidl_vec() { copyFrom(list.begin(), list.size()); }
    hidl_vec(const std::vector<T>& other) : hidl_vec() { copyFrom(other.begin(), other.size()); }
    template <typename InputIterator,
              typename Category = typename std::iterator_traits<InputIterator>::iterator_category>
    hidl_vec(InputIterator first, InputIterator last) : hidl_vec() {
        if constexpr (std::is_base_of_v<std::forward_iterator_tag, Category>) {
            copyFrom(first, static_cast<size_t>(std::distance(first, last)));
        } else {
            const std::vector<T> elements(first, last);
            copyFrom(elements.begin(), elements.size());
        }
    }

    ~hidl_vec() {
        static_assert(offsetof(hidl_vec, mBuffer) == kOffsetOfBuffer, "wrong offset");
        static_assert(sizeof(hidl_vec) == 16, "wrong size");
        freeBuffer();
    }

    hidl_vec& operator=(const hidl_vec& other) {
        if (this != &other) *this = hidl_vec(other);
        return *this;
    }
    hidl_vec& operator=(hidl_vec&& other) noexcept {
        if (this == &other) return *this;
        freeBuffer();
        mBuffer = static_cast<T*>(other.mBuffer);
        mSize = other.mSize;
        mOwnsBuffer = other.mOwnsBuffer;
        other.mOwnsBuffer = false;
        return *this;
    }
    hidl_vec& operator=(const std::vector<T>& other) { return *this = hidl_vec(other); }
    hidl_vec& operator=(std::initializer_list<T> list) { return *this = hidl_vec(list); }

    operator std::vector<T>() const { return std::vector<T>(begin(), end()); }

    size_t size() const { return mSize; }
    T* data() { return mBuffer; }
    const T* data() const { return mBuffer; }
    /** Not checked. */
    T& operator[](size_t index) { return mBuffer[index]; }
    const T& operator[](size_t index) const { return mBuffer[index]; }

    /** Moves to a new array, which keeps the common prefix; the rest is value-initialised. */
    void resize(size_t size) {
        checkSize(size);
        T* elements = new T[size]();
        const size_t kept = std::min(size, static_cast<size_t>(mSize));
        if (mOwnsBuffer) {
            std::move(begin(), begin() + kept, elements);
        } else {
            std::copy_n(begin(), kept, elements);
        }
        freeBuffer();
        mBuffer = elements;
        mSize = static_cast<uint32_t>(size);
        mOwnsBuffer = true;
    }

    /** Shows an array of somebody else, or takes it (from new T[]) if `shouldOwn`. */
    void setToExternal(T* data, size_t size, bool shouldOwn = false) {
        checkSize(size);
        freeBuffer();
        mBuffer = data;
        mSize = static_cast<uint32_t>(size);
        mOwnsBuffer = shouldOwn;
    }

    /** The caller gets the array, to be deleted with delete[]; it stays in view here. */
    T* releaseData() {
        if (!mOwnsBuffer && mSize > 0) copyFrom(begin(), mSize);
        mOwnsBuffer = false;
        return mBuffer;
    }

    bool operator==(const hidl_vec& other) const {
        return mSize == other.mSize && std::equal(begin(), end(), other.begin());
    }
    bool operator!=(const hidl_vec& other) const { return !(*this == other); }

    iterator begin() { return iterator(data()); }
    iterator end() { return iterator(data() + mSize); }
    const_iterator begin() const { return const_iterator(data()); }
    const_iterator end() const { return const_iterator(data() + mSize); }

    static constexpr size_t kOffsetOfBuffer = 0;

  private:
    static void checkSize(size_t size) {
        if (size > UINT32_MAX) details::logAlwaysFatal("hidl_vec is limited to 2^32 - 1 elements");
    }

    template <typename Iterator>
    void copyFrom(Iterator first, size_t size) {
        checkSize(size);
        T* elements = size == 0 ? nullptr : new T[size]();
        std::copy_n(first, size, elements);
        freeBuffer();
        mBuffer = elements;
        mSize = static_cast<uint32_t>(size);
        mOwnsBuffer = size != 0;
    }

    void freeBuffer() {
        if (mOwnsBuffer) delete[] static_cast<T*>(mBuffer);
    }

    details::hidl_pointer<T> mBuffer;
    uint32_t mSize;
    bool mOwnsBuffer;
    // Sent to other processes as it is in memory: without a name, these would be what was there.
    [[maybe_unused]] uint8_t mPad[3] = {};
};

}  // namespace hardware
}  // namespace android
