// SPDX-License-Identifier: Apache-2.0
// From the entry point to the returned object, and its end.

#include "benchmarks/operations/Connected.h"

namespace orvo::benchmarks {
namespace {

template <typename Provider>
class EntryPointSide : public Side {
  public:
    explicit EntryPointSide(size_t providers) : mSurroundings(providers, 0, 0) {}

    void call() override { mFetched = fetch<Provider>(Surroundings::kAggregator); }

    void restore() override {
        mFetched->decStrong(mFetched);
        mFetched = nullptr;
    }

  private:
    Surroundings mSurroundings;
    ICameraProvider* mFetched = nullptr;
};

}  // namespace

void addEntryPoint(std::vector<Operation>& operations) {
    for (const size_t size : {1, 8, 64}) {
        const auto [product, floor] = sidesOf<EntryPointSide>(size);
        operations.push_back({"entry point", size, "providers", product, floor, true});
    }
}

}  // namespace orvo::benchmarks
