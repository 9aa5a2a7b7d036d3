// SPDX-License-Identifier: Apache-2.0
// Loading map files.

#include <stdlib.h>

#include "benchmarks/floor/FloorProvider.h"
#include "benchmarks/operations/MapFile.h"
#include "benchmarks/operations/Operation.h"
#include "mapper/ProviderMapper.h"

namespace orvo::benchmarks {
namespace {

class ProductMapSide : public Side {
  public:
    explicit ProductMapSide(size_t entries) : mFile(entries) {}

    void call() override {
        camera::ProviderMapper mapper;
        if (!mapper.loadMapFromFile(mFile.path().c_str())) abort();
    }

  private:
    const MapFile mFile;
};

class FloorMapSide : public Side {
  public:
    explicit FloorMapSide(size_t entries) : mFile(entries) {}

    void call() override {
        FloorMap map;
        if (!loadMapAtFloor(mFile.path().c_str(), map)) abort();
    }

  private:
    const MapFile mFile;
};

class BareWalkSide : public Side {
  public:
    explicit BareWalkSide(size_t entries) : mEntries(entries), mFile(entries) {}

    void call() override {
        if (walkMapFile(mFile.path().c_str()) != mEntries) abort();
    }

  private:
    const size_t mEntries;
    const MapFile mFile;
};

}  // namespace

SideMaker bareWalkOf(size_t entries) {
    return [entries] { return std::make_unique<BareWalkSide>(entries); };
}

void addMapFiles(std::vector<Operation>& operations) {
    for (const size_t size : {10, 10'000, 300'000}) {
        Operation operation{kMapFileOperation, size, "entries",
                            [size] { return std::make_unique<ProductMapSide>(size); },
                            [size] { return std::make_unique<FloorMapSide>(size); }};
        if (size > 1000) operation.countedCalls = 1;
        operations.push_back(operation);
    }
}

}  // namespace orvo::benchmarks
