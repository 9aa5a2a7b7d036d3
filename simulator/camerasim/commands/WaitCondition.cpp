// SPDX-License-Identifier: Apache-2.0
// WaitCondition: the first word tells the kind.

#include "simulator/camerasim/commands/WaitCondition.h"

#include <algorithm>

#include <android-base/parseint.h>
#include <android-base/strings.h>
#include <nlohmann/json.hpp>

#include "simulator/camerasim/commands/Complaint.h"

namespace orvo::simulator {

using android::base::Result;
using Json = nlohmann::json;
using Words = std::vector<std::string>;

namespace {

constexpr char kForms[] =
        "write 'camera NAME PRESENT|NOT_PRESENT', 'provider NAME"
        " connected|disconnected|running|dead', 'property NAME is|contains TEXT', or 'cameras"
        " NUMBER'";

bool isOneOf(const std::string& word, const Words& choices) {
    return std::find(choices.begin(), choices.end(), word) != choices.end();
}

}  // namespace

Result<Json> parseCondition(const Words& words) {
    const std::string kind = words.empty() ? "" : words[0];
    if (kind == "camera" && words.size() == 3 && isOneOf(words[2], {"PRESENT", "NOT_PRESENT"})) {
        return Json{{"camera", words[1]}, {"status", words[2]}};
    }
    if (kind == "provider" && words.size() == 3 &&
        isOneOf(words[2], {"connected", "disconnected", "running", "dead"})) {
        return Json{{"provider", words[1]}, {"is", words[2]}};
    }
    if (kind == "property" && words.size() == 4 && isOneOf(words[2], {"is", "contains"})) {
        return Json{{"property", words[1]}, {words[2] == "is" ? "value" : "contains", words[3]}};
    }
    unsigned number = 0;
    if (kind == "cameras" && words.size() == 2 && android::base::ParseUint(words[1], &number)) {
        return Json{{"cameras", number}};
    }
    return badUse("'" + android::base::Join(words, " ") + "' is no condition; " + kForms);
}

}  // namespace orvo::simulator
