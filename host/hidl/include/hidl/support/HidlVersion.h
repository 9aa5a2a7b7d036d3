// SPDX-License-Identifier: Apache-2.0
// hidl_version: the version of a package. Part of hidl/HidlSupport.h.

#pragma once

#include <stdint.h>

namespace android {
namespace hardware {

/** Ordered by major, then minor number. */
struct hidl_version {
  public:
    constexpr hidl_version(uint16_t major, uint16_t minor) : mMajor(major), mMinor(minor) {
        static_assert(sizeof(hidl_version) == 4, "wrong size");
    }

    constexpr uint16_t get_major() const { return mMajor; }
    constexpr uint16_t get_minor() const { return mMinor; }

    constexpr bool operator==(const hidl_version& o) const { return number() == o.number(); }
    constexpr bool operator!=(const hidl_version& o) const { return number() != o.number(); }
    constexpr bool operator<(const hidl_version& o) const { return number() < o.number(); }
    constexpr bool operator>(const hidl_version& o) const { return number() > o.number(); }
    constexpr bool operator<=(const hidl_version& o) const { return number() <= o.number(); }
    constexpr bool operator>=(const hidl_version& o) const { return number() >= o.number(); }

  private:
    constexpr uint32_t number() const { return uint32_t{mMajor} << 16 | mMinor; }

    uint16_t mMajor;
    uint16_t mMinor;
};

inline constexpr hidl_version make_hidl_version(uint16_t major, uint16_t minor) {
    return hidl_version(major, minor);
}

}  // namespace hardware
}  // namespace android
