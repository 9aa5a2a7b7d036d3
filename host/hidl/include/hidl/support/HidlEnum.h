// SPDX-License-Identifier: Apache-2.0
// Bit fields and the values of enums. Part of hidl/HidlSupport.h.

#pragma once

#include <iterator>
#include <type_traits>

namespace android {
namespace hardware {

/** A combination of values of an enum: a number of the enum's underlying type. */
template <typename EnumType>
using hidl_bitfield = typename std::underlying_type<EnumType>::type;

namespace details {

namespace {
// Generated headers specialise hidl_enum_values without "inline". clang would make every such
// specialisation a strong symbol of each object that includes the header. A template argument of
// an unnamed namespace keeps them internal to the object.
struct KeepsInternal {};
}  // namespace

template <typename T>
struct NotAnEnumOfAnInterface;

/** All values of an enum in the order of declaration: a std::array, defined by generated headers.
 */
template <typename T, typename = std::enable_if_t<std::is_enum<T>::value, KeepsInternal>>
constexpr NotAnEnumOfAnInterface<T> hidl_enum_values;

}  // namespace details

/** For loops over all values of an enum. */
template <typename T, typename = std::enable_if_t<std::is_enum<T>::value>>
struct hidl_enum_range {
    constexpr auto begin() const { return std::begin(details::hidl_enum_values<T>); }
    constexpr auto cbegin() const { return begin(); }
    constexpr auto rbegin() const { return std::rbegin(details::hidl_enum_values<T>); }
    constexpr auto crbegin() const { return rbegin(); }
    constexpr auto end() const { return std::end(details::hidl_enum_values<T>); }
    constexpr auto cend() const { return end(); }
    constexpr auto rend() const { return std::rend(details::hidl_enum_values<T>); }
    constexpr auto crend() const { return rend(); }
};

}  // namespace hardware
}  // namespace android
