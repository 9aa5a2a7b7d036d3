// SPDX-License-Identifier: Apache-2.0
// Condition: one parser and one question for each kind.

#include "simulator/camerasim/inside/Condition.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include <nlohmann/json.hpp>

#include "simulator/description/OneLine.h"

namespace orvo::simulator {

using android::base::Error;
using android::base::Result;
using android::base::unexpected;
using nlohmann::json;
using Question = std::function<bool(const ConditionFacts&)>;

namespace {

constexpr char kPresent[] = "PRESENT";

/** The text of a member; nothing if it is not there or is no text. */
std::optional<std::string> textOf(const json& object, const char* member) {
    const auto found = object.find(member);
    if (found == object.end() || !found->is_string()) return std::nullopt;
    return found->get<std::string>();
}

bool isPresent(const ConditionFacts& facts, const std::string& name) {
    return std::any_of(facts.cameras.begin(), facts.cameras.end(), [&](const CameraState& camera) {
        return camera.name == name && camera.status == kPresent;
    });
}

Result<Question> aboutCamera(const std::string& name, const std::string& status) {
    if (status == kPresent) {
        return Question([=](const ConditionFacts& facts) { return isPresent(facts, name); });
    }
    if (status == "NOT_PRESENT") {
        return Question([=](const ConditionFacts& facts) {
            return facts.everReported.count(name) != 0 && !isPresent(facts, name);
        });
    }
    return Error() << "a camera cannot be waited for to be '" << onOneLine(status)
                   << "'; 'status' is PRESENT or NOT_PRESENT";
}

bool (*stateWord(const std::string& word))(const ProviderState&) {
    if (word == "connected") return [](const ProviderState& one) { return one.connected; };
    if (word == "disconnected") return [](const ProviderState& one) { return !one.connected; };
    if (word == "running") return [](const ProviderState& one) { return one.running; };
    if (word == "dead") return [](const ProviderState& one) { return !one.running; };
    return nullptr;
}

Result<Question> aboutProvider(const std::string& name, const std::string& word) {
    const auto holds = stateWord(word);
    if (holds == nullptr) {
        return Error() << "a provider cannot be waited for to be '" << onOneLine(word)
                       << "'; 'is' is connected, disconnected, running or dead";
    }
    return Question([=](const ConditionFacts& facts) {
        return std::any_of(
                facts.providers.begin(), facts.providers.end(),
                [&](const ProviderState& one) { return one.instance == name && holds(one); });
    });
}

Result<Question> aboutProperty(const std::string& name, const json& condition) {
    const auto value = textOf(condition, "value");
    if (value) {
        return Question(
                [=](const ConditionFacts& facts) { return facts.property(name) == *value; });
    }
    const auto part = textOf(condition, "contains");
    if (part) {
        return Question([=](const ConditionFacts& facts) {
            return facts.property(name).find(*part) != std::string::npos;
        });
    }
    return Error() << "a condition on a property needs 'value' or 'contains', a text";
}

Result<Question> aboutNumber(const json& number) {
    if (!number.is_number_unsigned()) {
        return Error() << "'cameras' is no number; send how many are to be PRESENT";
    }
    const auto wanted = number.get<uint64_t>();
    return Question([=](const ConditionFacts& facts) {
        const auto present = [](const CameraState& camera) { return camera.status == kPresent; };
        return static_cast<uint64_t>(std::count_if(facts.cameras.begin(), facts.cameras.end(),
                                                   present)) == wanted;
    });
}

}  // namespace

Result<Condition> Condition::parse(const json& text) {
    Condition condition;
    Result<Question> question =
            Error() << "the condition is none; it is {camera, status}, {provider, is}, {property,"
                    << " value or contains} or {cameras}";
    if (const auto camera = textOf(text, "camera")) {
        question = aboutCamera(*camera, textOf(text, "status").value_or(""));
    } else if (const auto provider = textOf(text, "provider")) {
        condition.mProvider = *provider;
        question = aboutProvider(*provider, textOf(text, "is").value_or(""));
    } else if (const auto property = textOf(text, "property")) {
        condition.mIsAboutProperty = true;
        question = aboutProperty(*property, text);
    } else if (text.is_object() && text.contains("cameras")) {
        question = aboutNumber(text["cameras"]);
    }
    if (!question) return unexpected(question.error());
    condition.mMet = *question;
    return condition;
}

bool Condition::met(const ConditionFacts& facts) const {
    return mMet(facts);
}

}  // namespace orvo::simulator
