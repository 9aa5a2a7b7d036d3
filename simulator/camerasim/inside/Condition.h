// SPDX-License-Identifier: Apache-2.0
// Condition: something about a running device that can be waited for.

#pragma once

#include <functional>
#include <set>
#include <string>
#include <vector>

#include <android-base/result.h>

#include "simulator/control/HeadsetState.h"

namespace orvo::simulator {

/** What conditions are about, at one moment. */
struct ConditionFacts {
    std::vector<CameraState> cameras;
    std::set<std::string> everReported;  ///< names of cameras since the boot
    std::vector<ProviderState> providers;
    std::function<std::string(const std::string& name)> property;  ///< "" if it is not set
};

/**
 * One of
 *
 *     {"camera": NAME, "status": "PRESENT" or "NOT_PRESENT"}
 *     {"provider": NAME, "is": "connected", "disconnected", "running" or "dead"}
 *     {"property": NAME, "value": TEXT}   or with "contains": TEXT
 *     {"cameras": N}                      so many are PRESENT
 *
 * A camera is NOT_PRESENT if it has been reported before and is not PRESENT now, also if that is
 * because the service that served it is gone. One that was never reported is neither.
 */
class Condition {
  public:
    /** An error, one line, says what a condition looks like. */
    static android::base::Result<Condition> parse(const nlohmann::json& text);

    bool met(const ConditionFacts& facts) const;

    /** The provider that it names, or "". */
    const std::string& provider() const { return mProvider; }
    /** Whether it is about a property, of whose changes nobody is told. */
    bool isAboutProperty() const { return mIsAboutProperty; }

  private:
    std::function<bool(const ConditionFacts&)> mMet;
    std::string mProvider;
    bool mIsAboutProperty = false;
};

}  // namespace orvo::simulator
