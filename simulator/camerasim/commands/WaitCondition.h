// SPDX-License-Identifier: Apache-2.0
// WaitCondition: what `camerasim wait` waits for, from the words of a command line.

#pragma once

#include <string>
#include <vector>

#include <android-base/result.h>
#include <nlohmann/json_fwd.hpp>

namespace orvo::simulator {

/**
 * One of
 *
 *     camera NAME PRESENT|NOT_PRESENT
 *     provider NAME connected|disconnected|running|dead
 *     property NAME is|contains TEXT
 *     cameras NUMBER
 *
 * @return the condition as the device understands it; an error, one line, says how to write one.
 */
android::base::Result<nlohmann::json> parseCondition(const std::vector<std::string>& words);

}  // namespace orvo::simulator
