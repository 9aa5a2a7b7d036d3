// SPDX-License-Identifier: Apache-2.0
// Condition: the first word tells the kind, the last one what is asked of it.

#include "simulator/control/Condition.h"

#include <algorithm>

#include <android-base/parseint.h>
#include <android-base/strings.h>

#include "simulator/control/Complaint.h"

namespace orvo::simulator {

using android::base::Result;
using Question = std::function<bool(const ConditionFacts&)>;

const char* const Condition::kForms =
        "  camera NAME PRESENT|NOT_PRESENT\n"
        "  provider NAME connected|disconnected|running|dead\n"
        "  property NAME is|contains TEXT\n"
        "  cameras NUMBER     (so many are PRESENT)\n";

namespace {

bool isPresent(const CameraState& camera) {
    return camera.status == "PRESENT";
}

// Each of these answers null if it does not know the word.

Question aboutCamera(const std::string& name, const std::string& status) {
    const auto present = [name](const ConditionFacts& facts) {
        return std::any_of(facts.cameras.begin(), facts.cameras.end(), [&](const auto& camera) {
            return camera.name == name && isPresent(camera);
        });
    };
    if (status == "PRESENT") return present;
    if (status != "NOT_PRESENT") return nullptr;
    return [=](const ConditionFacts& facts) {
        return facts.everReported.count(name) != 0 && !present(facts);
    };
}

Question aboutProvider(const std::string& name, const std::string& word) {
    using Holds = bool (*)(const ProviderState&);
    Holds holds = nullptr;
    if (word == "connected") holds = [](const ProviderState& one) { return one.connected; };
    if (word == "disconnected") holds = [](const ProviderState& one) { return !one.connected; };
    if (word == "running") holds = [](const ProviderState& one) { return one.running; };
    if (word == "dead") holds = [](const ProviderState& one) { return !one.running; };
    if (holds == nullptr) return nullptr;
    return [=](const ConditionFacts& facts) {
        return std::any_of(facts.providers.begin(), facts.providers.end(),
                           [&](const auto& one) { return one.instance == name && holds(one); });
    };
}

Question aboutProperty(const std::string& name, const std::string& word, const std::string& text) {
    if (word == "is") {
        return [=](const ConditionFacts& facts) { return facts.property(name) == text; };
    }
    if (word != "contains") return nullptr;
    return [=](const ConditionFacts& facts) {
        return facts.property(name).find(text) != std::string::npos;
    };
}

Question aboutNumber(const std::string& word) {
    unsigned wanted = 0;
    if (!android::base::ParseUint(word, &wanted)) return nullptr;
    return [=](const ConditionFacts& facts) {
        const auto& cameras = facts.cameras;
        return std::count_if(cameras.begin(), cameras.end(), isPresent) ==
               static_cast<std::ptrdiff_t>(wanted);
    };
}

}  // namespace

Result<Condition> Condition::parse(const std::vector<std::string>& words) {
    Condition condition;
    const std::string kind = words.empty() ? "" : words[0];
    if (kind == "camera" && words.size() == 3) {
        condition.mMet = aboutCamera(words[1], words[2]);
    } else if (kind == "provider" && words.size() == 3) {
        condition.mProvider = words[1];
        condition.mMet = aboutProvider(words[1], words[2]);
    } else if (kind == "property" && words.size() == 4) {
        condition.mIsAboutProperty = true;
        condition.mMet = aboutProperty(words[1], words[2], words[3]);
    } else if (kind == "cameras" && words.size() == 2) {
        condition.mMet = aboutNumber(words[1]);
    }
    if (condition.mMet) return condition;
    return badUse("'" + android::base::Join(words, " ") +
                  "' is no condition; write 'camera NAME PRESENT|NOT_PRESENT', 'provider NAME"
                  " connected|disconnected|running|dead', 'property NAME is|contains TEXT', or"
                  " 'cameras NUMBER'");
}

}  // namespace orvo::simulator
