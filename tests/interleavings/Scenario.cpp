// SPDX-License-Identifier: Apache-2.0
// The scenarios, as text and as lists.

#include "tests/interleavings/Scenario.h"

#include <string.h>

#include <algorithm>
#include <map>
#include <sstream>

namespace orvo::interleavings {
namespace {

constexpr char kWithCamera[] = "+-~^*";
constexpr char kWithProvider[] = "+-~^*DE";
constexpr char kWithId[] = "Ii";

}  // namespace

std::string Operation::text() const {
    std::string text(1, what);
    if (strchr(kWithProvider, what) != nullptr) text += std::to_string(provider);
    if (strchr(kWithCamera, what) != nullptr || strchr(kWithId, what) != nullptr) {
        text += std::to_string(camera);
    }
    return text;
}

std::string Operation::kind() const {
    static const std::map<char, std::string> kinds = {
            {'+', "report"},        {'-', "report"},    {'~', "report"},
            {'^', "report"},        {'*', "torch"},     {'B', "setCallback"},
            {'N', "setCallback"},   {'D', "death"},     {'E', "death"},
            {'L', "list"},          {'V', "tags"},      {'T', "torch support"},
            {'I', "interface"},     {'i', "interface"}, {'M', "load default/0"},
            {'O', "load legacy/0"},
    };
    const auto found = kinds.find(what);
    return found == kinds.end() ? "" : found->second;
}

std::string Scenario::text() const {
    std::string text = std::to_string(providers);
    if (callback) text += 'c';
    if (present) text += 'p';
    if (sameType) text += 's';
    if (failures > 0) text += "f" + std::to_string(failures);
    for (const Operation& operation : operations) text += " " + operation.text();
    return text;
}

std::optional<Scenario> Scenario::fromText(const std::string& text) {
    std::istringstream words(text);
    std::string setUp;
    words >> setUp;
    Scenario scenario;
    if (setUp.empty() || setUp[0] < '1' || setUp[0] > '4') return std::nullopt;
    scenario.providers = setUp[0] - '0';
    for (size_t i = 1; i < setUp.size(); ++i) {
        if (setUp[i] == 'c') scenario.callback = true;
        if (setUp[i] == 'p') scenario.present = true;
        if (setUp[i] == 's') scenario.sameType = true;
        if (setUp[i] == 'f') scenario.failures = atoi(setUp.c_str() + i + 1);
    }
    for (std::string word; words >> word;) {
        Operation operation{word[0]};
        size_t next = 1;
        const auto digit = [&](const char* whose, int& number) {
            if (strchr(whose, word[0]) == nullptr) return;
            if (next < word.size()) number = word[next] - '0';
            ++next;
        };
        digit(kWithProvider, operation.provider);
        digit(kWithCamera, operation.camera);
        digit(kWithId, operation.camera);
        const bool known = !operation.kind().empty() && next == word.size() &&
                           operation.provider >= 0 && operation.provider < scenario.providers &&
                           operation.camera >= 0 && operation.camera <= 9;
        if (!known) return std::nullopt;
        scenario.operations.push_back(operation);
    }
    return scenario;
}

std::string Scenario::provider(int number) const {
    static const char* const kNames[] = {"external/0", "virtual/0", "legacy/0", "remote/0"};
    if (sameType && number == 1) return "external/1";
    return kNames[number];
}

std::string Scenario::words(const Operation& operation) const {
    const std::string who = provider(operation.provider);
    const std::string camera = "camera " + std::to_string(operation.camera);
    switch (operation.what) {
        case '+':
            return who + " reports " + camera + " present";
        case '-':
            return who + " reports " + camera + " absent";
        case '~':
            return who + " reports " + camera + " enumerating";
        case '^':
            return who + ", back again, reports " + camera + " present";
        case '*':
            return who + " reports the torch of " + camera;
        case 'D':
            return who + " dies";
        case 'E':
            return who + ", back again, dies";
        case 'B':
            return "setCallback with callback 2";
        case 'N':
            return "setCallback with null";
        case 'L':
            return "getCameraIdList";
        case 'V':
            return "getVendorTags";
        case 'T':
            return "isSetTorchModeSupported";
        case 'M':
            return "default/0 is loaded";
        case 'O':
            return "legacy/0 is loaded";
        default:
            return "the interface of " + camera + " is asked for";
    }
}

std::string Scenario::frameworkDevice(const Operation& operation) {
    return "device@3.2/legacy/" + std::to_string(operation.camera);
}

std::string Scenario::device(const Operation& operation) const {
    const std::string name = provider(operation.provider);
    return "device@3.2/" + name.substr(0, name.find('/')) + "/" + std::to_string(operation.camera);
}

namespace {

// Nothing comes back that has not died.
bool canHappen(const Scenario& scenario) {
    const auto& all = scenario.operations;
    return std::all_of(all.begin(), all.end(), [&](const Operation& one) {
        if (one.what != 'E' && one.what != '^') return true;
        return std::any_of(all.begin(), all.end(), [&](const Operation& other) {
            return other.what == 'D' && other.provider == one.provider;
        });
    });
}

void addEach(const std::vector<Operation>& all, size_t first, Scenario scenario, int left,
             std::vector<Scenario>& scenarios) {
    if (left == 0) {
        if (canHappen(scenario)) scenarios.push_back(scenario);
        return;
    }
    for (size_t i = first; i < all.size(); ++i) {
        scenario.operations.push_back(all[i]);
        addEach(all, i, scenario, left - 1, scenarios);
        scenario.operations.pop_back();
    }
}

std::vector<Operation> operationsOf(const std::string& setUp, const std::string& texts) {
    return Scenario::fromText(setUp + " " + texts)->operations;
}

}  // namespace

std::vector<Scenario> scenariosOf(int operations) {
    // Set-up, and the operations of which every so many happen at once.
    static const std::pair<const char*, const char*> kChoices[] = {
            {"1cp", "+01 -01 *01 B N D0 E0 ^01 L V T I1 i1 I9"},
            {"1p", "+01 -01 *01 B D0 I1"},
            {"2cp", "+01 -01 +11 -11 *11 B D0 D1 E0 L V T I1"},
            {"2cps", "-01 +11 +12 D0 D1 ^01 I1"},
            {"1cpf1", "-01 D0 E0 ^01 B L"},
            {"1cpf9", "D0 ^01 L"},
            {"1cpf10", "D0 B L"},
            {"1cp", "M O +01 L"},
    };
    std::vector<Scenario> scenarios;
    for (const auto& [setUp, texts] : kChoices) {
        addEach(operationsOf(setUp, texts), 0, *Scenario::fromText(setUp), operations, scenarios);
    }
    // With a third operation, or a second one of either, there are too many orders.
    if (operations == 2) scenarios.push_back(*Scenario::fromText("1cp O D0"));
    return scenarios;
}

}  // namespace orvo::interleavings
