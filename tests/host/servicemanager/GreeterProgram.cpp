// SPDX-License-Identifier: Apache-2.0
// A process that registers greeters and serves them, for tests with several processes.
//
// It reads commands from its standard input and answers each with one line:
//   register NAME       a greeter@1.0 under NAME: "registered" or the status of the attempt
//   register1.1 NAME    a greeter@1.1 under NAME
//   fetch NAME          looks one up: "local", "remote" or "none", and its greeting
// The end of the input ends it.

#include <stdlib.h>

#include <iostream>
#include <string>

#include <hidl/HidlTransportSupport.h>

#include "tests/host/servicemanager/Greeter.h"

using android::sp;
using android::status_t;
using orvo::testing::CountingGreeter;
using orvo::testing::Greeter;
using IGreeter = orvo::test::greeter::V1_0::IGreeter;

namespace {

std::string describe(status_t status) {
    return status == android::OK ? "registered" : "status " + std::to_string(status);
}

std::string fetch(const std::string& name) {
    const sp<IGreeter> greeter = IGreeter::getService(name);
    if (greeter == nullptr) return "none";
    return std::string(greeter->isRemote() ? "remote: " : "local: ") +
           orvo::testing::greetingOf(greeter);
}

std::string answer(const std::string& command, const std::string& name) {
    if (command == "register") return describe((new Greeter(name))->registerAsService(name));
    if (command == "register1.1") {
        return describe((new CountingGreeter(name))->registerAsService(name));
    }
    if (command == "fetch") return fetch(name);
    return "unknown command " + command;
}

}  // namespace

int main() {
    android::hardware::configureRpcThreadpool(2, false /* callerWillJoin */);
    std::string command;
    std::string name;
    while (std::cin >> command >> name) std::cout << answer(command, name) << std::endl;
    // Calls may be under way on pool threads, so nothing is torn down under them.
    _Exit(EXIT_SUCCESS);
}
