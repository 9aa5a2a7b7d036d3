// SPDX-License-Identifier: Apache-2.0
// How values of calls are printed in logs. Part of hidl/HidlSupport.h.

#pragma once

#include <stdint.h>

#include <sstream>
#include <string>
#include <type_traits>

#include <hidl/support/HidlArray.h>
#include <hidl/support/HidlHandle.h>
#include <hidl/support/HidlString.h>
#include <hidl/support/HidlVec.h>

namespace android {
namespace hardware {
namespace details {

/** Hexadecimal, with 0x unless it is zero; numbers of eight bits are numbers, not characters. */
template <typename T>
std::string toHexString(T value, bool prefix = true) {
    std::ostringstream text;
    if (prefix) text << std::showbase;
    text << std::hex << +value;
    return text.str();
}

}  // namespace details

template <typename T>
typename std::enable_if<std::is_arithmetic<T>::value, std::string>::type toString(T value) {
    return std::to_string(value);
}

inline std::string toString(const void* pointer) {
    return details::toHexString(reinterpret_cast<uintptr_t>(pointer));
}

inline std::string toString(const hidl_string& text) {
    return '"' + std::string(text) + '"';
}

inline std::string toString(const hidl_handle& handle) {
    return toString(static_cast<const void*>(handle.getNativeHandle()));
}

inline std::string toString(const hidl_memory& memory) {
    return "memory {.name = " + toString(memory.name()) + ", .size = " + toString(memory.size()) +
           ", .handle = " + toString(static_cast<const void*>(memory.handle())) + "}";
}

namespace details {

// Declared here so that rows of numbers and of generated types are both found: the former by this
// using-declaration, the latter by their own namespaces.
template <typename Sequence>
std::string elementsToString(const Sequence& elements, size_t count) {
    using ::android::hardware::toString;
    std::string text = "{";
    for (size_t i = 0; i < count; i++) {
        if (i > 0) text += ", ";
        text += toString(elements[i]);
    }
    return text + "}";
}

/** The elements of one row of so many dimensions, and where the next row begins. */
template <typename T, size_t SIZE1, size_t... SIZES>
std::string rowToString(const T*& elements) {
    if constexpr (sizeof...(SIZES) == 0) {
        const T* row = elements;
        elements += SIZE1;
        return elementsToString(row, SIZE1);
    } else {
        std::string text = "{";
        for (size_t i = 0; i < SIZE1; i++) {
            if (i > 0) text += ", ";
            text += rowToString<T, SIZES...>(elements);
        }
        return text + "}";
    }
}

}  // namespace details

/** "[count]{element, ...}" */
template <typename T>
std::string toString(const hidl_vec<T>& elements) {
    return "[" + std::to_string(elements.size()) + "]" +
           details::elementsToString(elements, elements.size());
}

/** "[rows][columns]{{element, ...}, ...}", with as many dimensions as the array has. */
template <typename T, size_t SIZE1, size_t... SIZES>
std::string toString(const hidl_array<T, SIZE1, SIZES...>& array) {
    std::string text = "[" + std::to_string(SIZE1) + "]";
    ((text += "[" + std::to_string(SIZES) + "]"), ...);
    const T* elements = array.data();
    return text + details::rowToString<T, SIZE1, SIZES...>(elements);
}

}  // namespace hardware
}  // namespace android
