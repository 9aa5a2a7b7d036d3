// SPDX-License-Identifier: Apache-2.0
// getCameraDeviceInterface of both versions, for a device that is present.

#include "benchmarks/operations/Connected.h"

namespace orvo::benchmarks {
namespace {

using common::V1_0::Status;

template <typename Provider>
class DeviceSide : public ConnectedSide<Provider> {
  public:
    explicit DeviceSide(size_t activeDevices)
        : ConnectedSide<Provider>({8, 16, 0, activeDevices}),
          mName(Surroundings::frameworkDevice(activeDevices / 2)) {}

  protected:
    static void answer(Status status) {
        if (Journal::isOn()) Journal::add("device " + toString(status));
    }

    const hidl_string mName;
};

template <typename Provider>
class V1Side : public DeviceSide<Provider> {
  public:
    using DeviceSide<Provider>::DeviceSide;
    void call() override {
        this->mProvider
                ->getCameraDeviceInterface_V1_x(
                        this->mName, [](Status status, const auto&) { V1Side::answer(status); })
                .assertOk();
    }
};

template <typename Provider>
class V3Side : public DeviceSide<Provider> {
  public:
    using DeviceSide<Provider>::DeviceSide;
    void call() override {
        this->mProvider
                ->getCameraDeviceInterface_V3_x(
                        this->mName, [](Status status, const auto&) { V3Side::answer(status); })
                .assertOk();
    }
};

}  // namespace

void addDeviceAccess(std::vector<Operation>& operations) {
    for (const size_t size : {1, 1000}) {
        const auto [product, floor] = sidesOf<V3Side>(size);
        operations.push_back(
                {"getCameraDeviceInterface_V3_x", size, "active devices", product, floor});
    }
    for (const size_t size : {1, 1000}) {
        const auto [product, floor] = sidesOf<V1Side>(size);
        operations.push_back(
                {"getCameraDeviceInterface_V1_x", size, "active devices", product, floor});
    }
}

}  // namespace orvo::benchmarks
