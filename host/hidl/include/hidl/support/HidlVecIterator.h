// SPDX-License-Identifier: Apache-2.0
// The iterator of hidl_vec. Part of hidl/HidlSupport.h.

#pragma once

#include <stddef.h>

#include <iterator>
#include <type_traits>

namespace android {
namespace hardware {
namespace details {

/** Random access; T is const for the iterator of a constant vector. */
template <typename T>
class HidlVecIterator {
  public:
    using iterator_category = std::random_access_iterator_tag;
    using value_type = std::remove_cv_t<T>;
    using difference_type = ptrdiff_t;
    using pointer = T*;
    using reference = T&;

    HidlVecIterator() = default;
    explicit HidlVecIterator(T* element) : mElement(element) {}
    template <typename U, typename = std::enable_if_t<std::is_same<const U, T>::value>>
    HidlVecIterator(const HidlVecIterator<U>& other) : mElement(other.operator->()) {}

    T& operator*() const { return *mElement; }
    T* operator->() const { return mElement; }
    T& operator[](ptrdiff_t n) const { return mElement[n]; }

    HidlVecIterator& operator++() { return *this += 1; }
    HidlVecIterator& operator--() { return *this -= 1; }
    HidlVecIterator operator++(int) { return HidlVecIterator(mElement++); }
    HidlVecIterator operator--(int) { return HidlVecIterator(mElement--); }
    HidlVecIterator& operator+=(ptrdiff_t n) {
        mElement += n;
        return *this;
    }
    HidlVecIterator& operator-=(ptrdiff_t n) { return *this += -n; }

    friend HidlVecIterator operator+(HidlVecIterator it, ptrdiff_t n) { return it += n; }
    friend HidlVecIterator operator+(ptrdiff_t n, HidlVecIterator it) { return it += n; }
    friend HidlVecIterator operator-(HidlVecIterator it, ptrdiff_t n) { return it -= n; }
    friend ptrdiff_t operator-(HidlVecIterator a, HidlVecIterator b) {
        return a.mElement - b.mElement;
    }

    friend bool operator==(HidlVecIterator a, HidlVecIterator b) {
        return a.mElement == b.mElement;
    }
    friend bool operator!=(HidlVecIterator a, HidlVecIterator b) { return !(a == b); }
    friend bool operator<(HidlVecIterator a, HidlVecIterator b) { return a.mElement < b.mElement; }
    friend bool operator>(HidlVecIterator a, HidlVecIterator b) { return b < a; }
    friend bool operator<=(HidlVecIterator a, HidlVecIterator b) { return !(b < a); }
    friend bool operator>=(HidlVecIterator a, HidlVecIterator b) { return !(a < b); }

  private:
    T* mElement = nullptr;
};

}  // namespace details
}  // namespace hardware
}  // namespace android
