// SPDX-License-Identifier: Apache-2.0
// What the underlying providers report: devices that come and go, and torches.

#include "benchmarks/operations/Connected.h"

namespace orvo::benchmarks {
namespace {

using CameraDeviceStatus = FloorProvider::CameraDeviceStatus;
using TorchModeStatus = FloorProvider::TorchModeStatus;

constexpr size_t kListedIds = 8;  // What the property holds beside the reported device.

// A report of the device in the middle of the active ones, which is the last one in the property.
template <typename Provider>
class ReportSide : public ConnectedSide<Provider> {
  public:
    explicit ReportSide(size_t activeDevices)
        : ConnectedSide<Provider>({8, 16, 0, activeDevices}),
          mDevice(activeDevices / 2),
          mName(Surroundings::providerDevice(0, mDevice)) {}

  protected:
    void setProperty(bool withDevice) {
        std::string value;
        for (size_t i = 0; i < kListedIds; ++i) {
            value += (i == 0 ? "" : ", ") + std::to_string(9000 + i);
        }
        if (withDevice) value += ", " + std::to_string(mDevice);
        presetProperty("camera." + Surroundings::type(0) + ".ids", value);
    }

    const size_t mDevice;
    const hidl_string mName;
};

template <typename Provider>
class PresentSide : public ReportSide<Provider> {
  public:
    explicit PresentSide(size_t activeDevices) : ReportSide<Provider>(activeDevices) { restore(); }

    void call() override {
        this->mProvider->cameraDeviceStatusChange(this->mName, CameraDeviceStatus::PRESENT)
                .assertOk();
    }

    void restore() final {
        this->forget(this->mDevice);
        this->setProperty(false);
    }
};

template <typename Provider>
class NotPresentSide : public ReportSide<Provider> {
  public:
    explicit NotPresentSide(size_t activeDevices) : ReportSide<Provider>(activeDevices) {
        restore();
    }

    void call() override {
        this->mProvider->cameraDeviceStatusChange(this->mName, CameraDeviceStatus::NOT_PRESENT)
                .assertOk();
    }

    void restore() final {
        this->enter(this->mDevice);
        this->setProperty(true);
    }
};

template <typename Provider>
class TorchSide : public ReportSide<Provider> {
  public:
    using ReportSide<Provider>::ReportSide;

    void call() override {
        this->mProvider->torchModeStatusChange(this->mName, TorchModeStatus::AVAILABLE_ON)
                .assertOk();
    }
};

}  // namespace

void addNotifications(std::vector<Operation>& operations) {
    for (const size_t size : {1, 64, 1000}) {
        const auto [product, floor] = sidesOf<PresentSide>(size);
        operations.push_back(
                {"cameraDeviceStatusChange PRESENT", size, "active devices", product, floor, true});
    }
    for (const size_t size : {1, 64, 1000}) {
        const auto [product, floor] = sidesOf<NotPresentSide>(size);
        operations.push_back({"cameraDeviceStatusChange NOT_PRESENT", size, "active devices",
                              product, floor, true});
    }
    for (const size_t size : {1, 1000}) {
        const auto [product, floor] = sidesOf<TorchSide>(size);
        operations.push_back({"torchModeStatusChange", size, "active devices", product, floor});
    }
}

}  // namespace orvo::benchmarks
