// SPDX-License-Identifier: Apache-2.0
// A fake that says when it is destroyed.
#pragma once

#include <functional>
#include <utility>

namespace orvo::test {

/** Runs a function at its end. */
template <typename Fake>
class Departing : public Fake {
  public:
    explicit Departing(std::function<void()> onDestroyed) : mOnDestroyed(std::move(onDestroyed)) {}
    ~Departing() override { mOnDestroyed(); }

  private:
    std::function<void()> mOnDestroyed;
};

}  // namespace orvo::test
