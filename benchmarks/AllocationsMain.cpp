// SPDX-License-Identifier: Apache-2.0
// Counts the heap allocations of every operation, and weighs an active device.

#include <stdio.h>
#include <stdlib.h>

#include "benchmarks/AllocationCounter.h"
#include "benchmarks/fakes/Journal.h"
#include "benchmarks/operations/Connected.h"

namespace orvo::benchmarks {
namespace {

double allocationsOf(const SideMaker& make, int calls) {
    const std::unique_ptr<Side> side = make();
    side->call();  // The first call also fills caches of the platform's.
    side->restore();
    size_t allocations = 0;
    for (int i = 0; i < calls; ++i) {
        const HeapCounts before = heapCounts();
        side->call();
        allocations += heapCounts().allocations - before.allocations;
        side->restore();
    }
    return static_cast<double>(allocations) / calls;
}

// What the heap keeps for each active device after it was reported.
template <typename Provider>
double bytesOfActiveDevice() {
    constexpr size_t kDevices = 1000;
    struct Reporting : ConnectedSide<Provider> {
        Reporting() : ConnectedSide<Provider>(Amounts()) {}
        void call() override {
            for (size_t i = 0; i < kDevices; ++i) {
                this->mProvider
                        ->cameraDeviceStatusChange(Surroundings::providerDevice(0, i),
                                                   FloorProvider::CameraDeviceStatus::PRESENT)
                        .assertOk();
            }
        }
    } side;
    const size_t before = heapCounts().liveBytes;
    side.call();
    return static_cast<double>(heapCounts().liveBytes - before) / kDevices;
}

void print(const char* title, const char* side, double value) {
    printf("%s/%s %.2f\n", title, side, value);
}

}  // namespace
}  // namespace orvo::benchmarks

// Prints one line for each side of each operation: its title and the allocations of one call.
// usage: benchmark_allocations [MAXIMUM_SIZE]
int main(int argc, char** argv) {
    using namespace orvo::benchmarks;
    const size_t maximum = argc > 1 ? strtoul(argv[1], nullptr, 10) : SIZE_MAX;
    dropLogLines();
    for (const Operation& operation : allOperations()) {
        if (operation.size > maximum) continue;
        const std::string title = operation.title();
        print(title.c_str(), "product", allocationsOf(operation.product, operation.countedCalls));
        print(title.c_str(), "floor", allocationsOf(operation.floor, operation.countedCalls));
    }
    print("bytes of an active device", "product", bytesOfActiveDevice<ProductProvider>());
    print("bytes of an active device", "floor", bytesOfActiveDevice<FloorProvider>());
}
