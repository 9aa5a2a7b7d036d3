// SPDX-License-Identifier: Apache-2.0
// The two operations that collect from all providers.

#include "benchmarks/operations/Connected.h"

namespace orvo::benchmarks {
namespace {

using common::V1_0::Status;

template <typename Provider>
class IdListSide : public ConnectedSide<Provider> {
  public:
    explicit IdListSide(size_t providers) : ConnectedSide<Provider>({providers, 16, 0, 0}) {}

    void call() override {
        this->mProvider
                ->getCameraIdList([](Status status, const hidl_vec<hidl_string>& names) {
                    if (Journal::isOn()) Journal::add(toString(status) + " " + toString(names));
                })
                .assertOk();
    }
};

template <typename Provider>
class VendorTagSide : public ConnectedSide<Provider> {
  public:
    explicit VendorTagSide(size_t providers) : ConnectedSide<Provider>({providers, 0, 32, 0}) {}

    void call() override {
        this->mProvider
                ->getVendorTags([](Status status, const auto& sections) {
                    if (Journal::isOn()) Journal::add(toString(status) + " " + toString(sections));
                })
                .assertOk();
    }
};

}  // namespace

void addListings(std::vector<Operation>& operations) {
    for (const size_t size : {1, 8, 64}) {
        const auto [product, floor] = sidesOf<IdListSide>(size);
        operations.push_back({"getCameraIdList", size, "providers of 16 ids", product, floor});
    }
    for (const size_t size : {1, 8, 64}) {
        const auto [product, floor] = sidesOf<VendorTagSide>(size);
        Operation operation{"getVendorTags", size, "providers of 32 sections of 32 tags", product,
                            floor};
        operation.countedCalls = 2;
        operations.push_back(operation);
    }
}

}  // namespace orvo::benchmarks
