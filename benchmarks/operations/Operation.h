// SPDX-License-Identifier: Apache-2.0
// The operations whose cost is measured, each as the library does it and at its floor.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace orvo::benchmarks {

/** One side of a comparison, made ready. At most one exists at a time. */
class Side {
  public:
    virtual ~Side() = default;
    /** One call of the operation: all that is measured. */
    virtual void call() = 0;
    /** Brings back the state before the call. Not measured. */
    virtual void restore() {}
};

using SideMaker = std::function<std::unique_ptr<Side>()>;

/** An operation with one amount of work. */
struct Operation {
    std::string name;  ///< Such as "getCameraIdList".
    size_t size;       ///< How much there is of what the operation is measured over.
    std::string unit;  ///< What that is, such as "providers".
    SideMaker product;
    SideMaker floor;
    bool restores = false;  ///< Each call needs restore() before the next one.
    int countedCalls = 10;  ///< How many calls are counted; fewer where one is long.

    /** "getCameraIdList/8". */
    std::string title() const { return name + "/" + std::to_string(size); }
};

/** All of them, in the order of the report. */
std::vector<Operation> allOperations();

void addDeviceAccess(std::vector<Operation>& operations);
void addListings(std::vector<Operation>& operations);
void addNotifications(std::vector<Operation>& operations);
void addDeath(std::vector<Operation>& operations);
void addMapFiles(std::vector<Operation>& operations);
void addEntryPoint(std::vector<Operation>& operations);

inline constexpr char kMapFileOperation[] = "loading a map file";

/** xmlParseMemory and the walk over that many entries, without all that a load keeps and logs. */
SideMaker bareWalkOf(size_t entries);

}  // namespace orvo::benchmarks
