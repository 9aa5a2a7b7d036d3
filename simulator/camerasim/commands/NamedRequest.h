// SPDX-License-Identifier: Apache-2.0
// NamedRequest: requests that name something, and what becomes of names that nothing has.

#pragma once

#include <chrono>
#include <string>

#include <android-base/result.h>
#include <nlohmann/json_fwd.hpp>

#include "simulator/control/ControlClient.h"

namespace orvo::simulator {

/**
 * As ask(). If the device refuses and the request names a provider, camera, device or service that
 * the device does not have, the error is a bad use; else it is a thing that did not happen.
 */
android::base::Result<nlohmann::json> askByName(
        const std::string& root, const nlohmann::json& request,
        std::chrono::milliseconds patience = kAnswerPatience);

}  // namespace orvo::simulator
