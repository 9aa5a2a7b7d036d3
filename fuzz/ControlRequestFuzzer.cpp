// SPDX-License-Identifier: Apache-2.0
// One line on a running device's control socket: it is a request, or one line says what is wrong.

#include <string>
#include <variant>

#include "fuzz/support/Require.h"
#include "simulator/control/Condition.h"
#include "simulator/control/Protocol.h"

using orvo::fuzz::require;
using orvo::simulator::Condition;
using orvo::simulator::ConditionFacts;
using orvo::simulator::WaitRequest;

namespace {

void requireOneLine(const std::string& error) {
    require(!error.empty() && error.find('\n') == std::string::npos, "one line of error", error);
}

ConditionFacts someFacts() {
    ConditionFacts facts;
    facts.cameras.emplace_back().name = "device@3.2/legacy/100";
    facts.cameras.back().status = "PRESENT";
    facts.everReported = {"device@3.2/legacy/100", "device@3.2/legacy/101"};
    facts.providers.emplace_back().instance = "external/0";
    facts.property = [](const std::string& name) { return name; };
    return facts;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static const ConditionFacts facts = someFacts();
    const auto request =
            orvo::simulator::parseRequest(std::string(reinterpret_cast<const char*>(data), size));
    if (!request) {
        requireOneLine(request.error().message());
        return 0;
    }
    const std::string line = orvo::simulator::lineOf(*request);
    const auto again = orvo::simulator::parseRequest(line);
    require(again && lineOf(*again) == line, "a request is the same after its way", line);
    const auto* wait = std::get_if<WaitRequest>(&*request);
    if (wait == nullptr) return 0;

    const auto condition = Condition::parse(wait->condition);
    if (!condition) {
        require(!condition.error().message().empty(), "an error", line);
        return 0;
    }
    (void)condition->met(facts);
    return 0;
}
