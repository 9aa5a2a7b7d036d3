// SPDX-License-Identifier: Apache-2.0
// The bytes: the set-up in two, the number of operations, two for each of them, and one for each
// decision between several threads.

#include "tests/interleavings/Input.h"

#include <algorithm>
#include <iterator>

#include "fuzz/support/ByteSource.h"

namespace orvo::interleavings {
namespace {

constexpr char kOperations[] = "+-~^*BNDELVTIiMO";
constexpr size_t kOperationCount = sizeof(kOperations) - 1;
constexpr int kFailures[] = {0, 1, 9, 10};
constexpr int kCameras = 10;

}  // namespace

Run runInput(const uint8_t* data, size_t size) {
    fuzz::ByteSource bytes(data, size);
    Scenario scenario;
    scenario.providers = 1 + static_cast<int>(bytes.below(4));
    const auto setUp = bytes.number<uint8_t>();
    scenario.callback = (setUp & 1) != 0;
    scenario.present = (setUp & 2) != 0;
    scenario.sameType = (setUp & 4) != 0;
    scenario.failures = kFailures[(setUp >> 3) & 3];
    const size_t count = bytes.below(kMostOperations + 1);
    for (size_t i = 0; i < count; ++i) {
        Operation operation{kOperations[bytes.below(kOperationCount)]};
        const auto numbers = bytes.number<uint8_t>();
        operation.provider = numbers % scenario.providers;
        operation.camera = numbers / 4 % kCameras;
        scenario.operations.push_back(operation);
    }
    return runOnce(scenario,
                   [&](const std::vector<int>& enabled, int running, const std::vector<Step>&) {
                       if (enabled.size() == 1 || bytes.empty()) return stay(enabled, running);
                       return enabled[bytes.below(enabled.size())];
                   });
}

std::string inputOf(const Scenario& scenario, const Run& run) {
    const auto failures = std::find(std::begin(kFailures), std::end(kFailures), scenario.failures);
    std::string bytes;
    bytes += static_cast<char>(scenario.providers - 1);
    bytes += static_cast<char>((scenario.callback ? 1 : 0) | (scenario.present ? 2 : 0) |
                               (scenario.sameType ? 4 : 0) |
                               (failures - std::begin(kFailures)) << 3);
    bytes += static_cast<char>(scenario.operations.size());
    for (const Operation& operation : scenario.operations) {
        bytes += static_cast<char>(std::string(kOperations).find(operation.what));
        bytes += static_cast<char>(operation.provider + 4 * operation.camera);
    }
    for (const Step& step : run.steps) {
        if (step.enabled.count() == 1) continue;
        const Threads before = step.enabled & ~(~Threads() << static_cast<size_t>(step.thread));
        bytes += static_cast<char>(before.count());
    }
    return bytes;
}

}  // namespace orvo::interleavings
