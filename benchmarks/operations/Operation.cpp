// SPDX-License-Identifier: Apache-2.0
// Puts the list together.

#include "benchmarks/operations/Operation.h"

namespace orvo::benchmarks {

std::vector<Operation> allOperations() {
    std::vector<Operation> operations;
    addDeviceAccess(operations);
    addListings(operations);
    addNotifications(operations);
    addDeath(operations);
    addMapFiles(operations);
    addEntryPoint(operations);
    return operations;
}

}  // namespace orvo::benchmarks
