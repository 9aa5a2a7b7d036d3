// SPDX-License-Identifier: Apache-2.0
// Condition: something about a running headset that can be waited for.

#pragma once

#include <functional>
#include <set>
#include <string>
#include <vector>

#include <android-base/result.h>

#include "simulator/control/Protocol.h"

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
 *     camera NAME PRESENT|NOT_PRESENT
 *     provider NAME connected|disconnected|running|dead
 *     property NAME is|contains TEXT
 *     cameras NUMBER                   (so many are PRESENT)
 *
 * A camera is NOT_PRESENT if it has been reported before and is not PRESENT now, also if that is
 * because the service that served it is gone. One that was never reported is neither.
 */
class Condition {
  public:
    /** The four lines above, for a command's help. */
    static const char* const kForms;

    /** @param words of a command line. An error, a bad use, says how to write a condition. */
    static android::base::Result<Condition> parse(const std::vector<std::string>& words);

    bool met(const ConditionFacts& facts) const { return mMet(facts); }

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
