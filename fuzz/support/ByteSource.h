// SPDX-License-Identifier: Apache-2.0
// ByteSource: turns the bytes of one fuzzer input into choices, numbers and texts.

#pragma once

#include <stddef.h>
#include <stdint.h>
#include <string.h>

#include <algorithm>
#include <string>

namespace orvo::fuzz {

/**
 * Hands out the bytes from front to back, so that a small change of the input changes one choice.
 * Once they are used up it answers zeros and empty texts. Borrows the bytes.
 */
class ByteSource {
  public:
    ByteSource(const uint8_t* data, size_t size) : mNext(data), mLeft(size) {}

    bool empty() const { return mLeft == 0; }

    /** The next bytes as a number in the machine's order. */
    template <typename Number>
    Number number() {
        Number value = 0;
        const size_t size = std::min(sizeof(value), mLeft);
        if (size > 0) memcpy(&value, mNext, size);
        skip(size);
        return value;
    }

    bool flag() { return (number<uint8_t>() & 1) != 0; }

    /** From 0 to `count` - 1, from one byte, or two if there are more than 256; `count` is not 0.
     */
    size_t below(size_t count) {
        return (count <= 256 ? number<uint8_t>() : number<uint16_t>()) % count;
    }

    /** A length in one byte, and as many bytes as that and no more than `most`. */
    std::string text(size_t most = 255) {
        const size_t size = std::min({size_t{number<uint8_t>()}, mLeft, most});
        const std::string taken(reinterpret_cast<const char*>(mNext), size);
        skip(size);
        return taken;
    }

    /** All that is left. */
    std::string rest() {
        const std::string taken(reinterpret_cast<const char*>(mNext), mLeft);
        skip(mLeft);
        return taken;
    }

  private:
    void skip(size_t size) {
        mNext += size;
        mLeft -= size;
    }

    const uint8_t* mNext;
    size_t mLeft;
};

}  // namespace orvo::fuzz
