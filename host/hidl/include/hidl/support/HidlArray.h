// SPDX-License-Identifier: Apache-2.0
// hidl_array: a fixed number of elements in one or more dimensions. Part of hidl/HidlSupport.h.

#pragma once

#include <stddef.h>

#include <algorithm>
#include <array>
#include <tuple>
#include <type_traits>

namespace android {
namespace hardware {
namespace details {

/** How many elements so many dimensions make. */
template <size_t... SIZES>
constexpr size_t kElementCount = (size_t{1} * ... * SIZES);

/** std::array of std::array of ... T. */
template <typename T, size_t SIZE1, size_t... SIZES>
struct NestedArray {
    using type = std::array<typename NestedArray<T, SIZES...>::type, SIZE1>;
};
template <typename T, size_t SIZE1>
struct NestedArray<T, SIZE1> {
    using type = std::array<T, SIZE1>;
};

/** Copies between nested std::array and elements in row-major order; returns where it stopped. */
template <typename T>
T* copyElements(const T& from, T* to) {
    *to = from;
    return to + 1;
}
template <typename T, typename Row, size_t SIZE>
T* copyElements(const std::array<Row, SIZE>& from, T* to) {
    for (const Row& row : from) to = copyElements(row, to);
    return to;
}
template <typename T>
const T* fillElements(const T* from, T& to) {
    to = *from;
    return from + 1;
}
template <typename T, typename Row, size_t SIZE>
const T* fillElements(const T* from, std::array<Row, SIZE>& to) {
    for (Row& row : to) from = fillElements(from, row);
    return from;
}

/** One row of an array of several dimensions: a view, valid as long as the array. */
template <typename T, size_t SIZE1, size_t... SIZES>
class ArrayRow {
  public:
    explicit ArrayRow(T* elements) : mElements(elements) {}

    decltype(auto) operator[](size_t index) const {
        if constexpr (sizeof...(SIZES) == 0) {
            return (mElements[index]);
        } else {
            return ArrayRow<T, SIZES...>(mElements + index * kElementCount<SIZES...>);
        }
    }

    /** Copies a whole row in. */
    const ArrayRow& operator=(
            const typename NestedArray<std::remove_const_t<T>, SIZE1, SIZES...>::type& row) const {
        copyElements(row, mElements);
        return *this;
    }

    constexpr size_t size() const { return SIZE1; }

  private:
    T* mElements;
};

}  // namespace details

/** Exactly as large as its elements, which lie in row-major order. Indices are not checked. */
template <typename T, size_t SIZE1, size_t... SIZES>
class hidl_array {
    static constexpr size_t kCount = details::kElementCount<SIZE1, SIZES...>;

  public:
    using std_array_type = typename details::NestedArray<T, SIZE1, SIZES...>::type;

    /** Elements are default-initialised. */
    hidl_array() = default;

    /** Copies as many elements as the array has. */
    template <typename Pointer,
              typename = std::enable_if_t<std::is_convertible<Pointer, const T*>::value>>
    hidl_array(Pointer elements) {
        std::copy_n(static_cast<const T*>(elements), kCount, mElements);
    }
    /** Preferred for whole arrays: g++ refuses to turn a temporary one into a pointer. */
    hidl_array(const T (&elements)[kCount]) { std::copy_n(elements, kCount, mElements); }
    hidl_array(const std_array_type& array) { details::copyElements(array, mElements); }

    T* data() { return mElements; }
    const T* data() const { return mElements; }

    /** An element, or a row if there are several dimensions. */
    decltype(auto) operator[](size_t index) {
        return details::ArrayRow<T, SIZE1, SIZES...>(mElements)[index];
    }
    decltype(auto) operator[](size_t index) const {
        return details::ArrayRow<const T, SIZE1, SIZES...>(mElements)[index];
    }

    bool operator==(const hidl_array& other) const {
        return std::equal(mElements, mElements + kCount, other.mElements);
    }
    bool operator!=(const hidl_array& other) const { return !(*this == other); }

    /** The length, or a tuple of the lengths of all dimensions. */
    static constexpr auto size() {
        if constexpr (sizeof...(SIZES) == 0) {
            return SIZE1;
        } else {
            return std::make_tuple(SIZE1, SIZES...);
        }
    }
    static constexpr size_t elementCount() { return kCount; }

    operator std_array_type() const {
        std_array_type array;
        details::fillElements(static_cast<const T*>(mElements), array);
        return array;
    }

  private:
    T mElements[kCount];
};

}  // namespace hardware
}  // namespace android
