// SPDX-License-Identifier: Apache-2.0
// FrameworkClient: one call on the provider for each question.

#include "simulator/framework/FrameworkClient.h"

#include <sys/mman.h>

#include <utility>

#include <android-base/file.h>
#include <android-base/unique_fd.h>

namespace orvo::simulator {

using android::sp;
using android::wp;
using android::base::Error;
using android::base::Result;
using android::hardware::hidl_death_recipient;
using android::hardware::hidl_string;
using android::hardware::hidl_vec;
using android::hardware::Return;
using android::hardware::camera::common::V1_0::CameraResourceCost;
using android::hardware::camera::device::V1_0::CameraInfo;
using android::hardware::camera::device::V3_2::CameraMetadata;

namespace {

std::string failureOf(const android::hardware::details::return_status& result) {
    if (result.isOk()) return "";
    return result.isDeadObject() ? "the provider's process is gone" : result.description();
}

std::vector<std::string> toStrings(const hidl_vec<hidl_string>& texts) {
    return {texts.begin(), texts.end()};
}

/** The answer of one part as the answer of the whole. */
template <typename To, typename From>
Answer<To> failed(const Answer<From>& part) {
    Answer<To> whole;
    whole.failure = part.failure;
    whole.status = part.status;
    return whole;
}

template <typename Device>
Answer<CameraResourceCost> resourceCostOf(const sp<Device>& device) {
    Answer<CameraResourceCost> answer;
    const auto result = device->getResourceCost([&](auto status, const auto& cost) {
        answer.status = status;
        answer.value = cost;
    });
    answer.failure = failureOf(result);
    return answer;
}

/** Takes results of an open camera and keeps none: a camera without streams has none to send. */
class QuietDeviceCallback : public android::hardware::camera::device::V3_2::ICameraDeviceCallback {
    using CaptureResult = android::hardware::camera::device::V3_2::CaptureResult;
    using NotifyMsg = android::hardware::camera::device::V3_2::NotifyMsg;

    Return<void> processCaptureResult(const hidl_vec<CaptureResult>&) override {
        return android::hardware::Void();
    }
    Return<void> notify(const hidl_vec<NotifyMsg>&) override { return android::hardware::Void(); }
};

}  // namespace

/** Closes the log when the provider's process dies, so that nobody waits in vain. */
class FrameworkClient::Death : public hidl_death_recipient {
  public:
    explicit Death(sp<StatusLog> log) : mLog(std::move(log)) {}
    void serviceDied(uint64_t, const wp<android::hidl::base::V1_0::IBase>&) override {
        mLog->close();
    }

  private:
    const sp<StatusLog> mLog;
};

Result<std::unique_ptr<FrameworkClient>> FrameworkClient::connect(const std::string& instance,
                                                                  const sp<StatusLog>& log) {
    sp<Provider> provider = Provider::tryGetService(instance);
    if (provider == nullptr) {
        return Error() << "no camera provider is registered as " << instance
                       << "; start one, or name one that is there";
    }
    sp<Death> death = new Death(log);
    const Return<bool> linked = provider->linkToDeath(death, 0);
    if (!linked.isOk() || !linked) {
        return Error() << "the camera provider " << instance << " has just died; start it again";
    }
    return std::unique_ptr<FrameworkClient>(new FrameworkClient(provider, log, death));
}

FrameworkClient::FrameworkClient(sp<Provider> provider, sp<StatusLog> log, sp<Death> death)
    : mProvider(std::move(provider)), mLog(std::move(log)), mDeath(std::move(death)) {}

FrameworkClient::~FrameworkClient() {
    mLog->close();
    // A provider that is gone keeps no link either.
    (void)mProvider->unlinkToDeath(mDeath).isOk();
}

Answer<bool> FrameworkClient::registerCallback() {
    Answer<bool> answer;
    const Return<Status> result = mProvider->setCallback(mLog);
    answer.failure = failureOf(result);
    if (answer.arrived()) answer.status = result;
    answer.value = answer.ok();
    return answer;
}

Answer<std::vector<std::string>> FrameworkClient::cameraIdList() {
    Answer<std::vector<std::string>> answer;
    const auto result = mProvider->getCameraIdList([&](Status status, const auto& names) {
        answer.status = status;
        answer.value = toStrings(names);
    });
    answer.failure = failureOf(result);
    return answer;
}

Answer<bool> FrameworkClient::isTorchSupported() {
    Answer<bool> answer;
    const auto result = mProvider->isSetTorchModeSupported([&](Status status, bool supported) {
        answer.status = status;
        answer.value = supported;
    });
    answer.failure = failureOf(result);
    return answer;
}

Answer<std::vector<FrameworkClient::VendorTagSection>> FrameworkClient::vendorTags() {
    Answer<std::vector<VendorTagSection>> answer;
    const auto result = mProvider->getVendorTags([&](Status status, const auto& sections) {
        answer.status = status;
        answer.value = sections;
    });
    answer.failure = failureOf(result);
    return answer;
}

Answer<sp<FrameworkClient::DeviceV1>> FrameworkClient::deviceV1(const std::string& name) {
    Answer<sp<DeviceV1>> answer;
    const auto result = mProvider->getCameraDeviceInterface_V1_x(
            name, [&](Status status, const sp<DeviceV1>& device) {
                answer.status = status;
                answer.value = device;
            });
    answer.failure = failureOf(result);
    if (answer.ok() && answer.value == nullptr) answer.failure = "the provider gave no device";
    return answer;
}

Answer<sp<FrameworkClient::DeviceV3>> FrameworkClient::deviceV3(const std::string& name) {
    Answer<sp<DeviceV3>> answer;
    const auto result = mProvider->getCameraDeviceInterface_V3_x(
            name, [&](Status status, const sp<DeviceV3>& device) {
                answer.status = status;
                answer.value = device;
            });
    answer.failure = failureOf(result);
    if (answer.ok() && answer.value == nullptr) answer.failure = "the provider gave no device";
    return answer;
}

Answer<CameraFacts> FrameworkClient::readCamera(const std::string& name) {
    return name.rfind("device@1.", 0) == 0 ? readCameraV1(name) : readCameraV3(name);
}

Answer<CameraFacts> FrameworkClient::readCameraV1(const std::string& name) {
    const auto device = deviceV1(name);
    if (!device.ok()) return failed<CameraFacts>(device);
    const auto cost = resourceCostOf(device.value);
    if (!cost.ok()) return failed<CameraFacts>(cost);
    Answer<CameraFacts> answer;
    answer.value.resourceCost = cost.value.resourceCost;
    answer.value.conflictingDevices = toStrings(cost.value.conflictingDevices);
    const auto result = device.value->getCameraInfo([&](Status status, const CameraInfo& info) {
        answer.status = status;
        answer.value.info = "facing " + toString(info.facing) + ", orientation " +
                            std::to_string(info.orientation);
    });
    answer.failure = failureOf(result);
    return answer;
}

Answer<CameraFacts> FrameworkClient::readCameraV3(const std::string& name) {
    const auto device = deviceV3(name);
    if (!device.ok()) return failed<CameraFacts>(device);
    const auto cost = resourceCostOf(device.value);
    if (!cost.ok()) return failed<CameraFacts>(cost);
    Answer<CameraFacts> answer;
    answer.value.resourceCost = cost.value.resourceCost;
    answer.value.conflictingDevices = toStrings(cost.value.conflictingDevices);
    bool readable = true;
    const auto result = device.value->getCameraCharacteristics(
            [&](Status status, const CameraMetadata& metadata) {
                answer.status = status;
                answer.value.characteristicsBytes = metadata.size();
                auto entries = unpackMetadata(metadata.data(), metadata.size());
                readable = entries.has_value() || status != Status::OK;
                if (entries) answer.value.characteristics = std::move(*entries);
            });
    answer.failure = failureOf(result);
    if (answer.arrived() && !readable) answer.failure = "the characteristics are no metadata";
    return answer;
}

Answer<sp<FrameworkClient::Session>> FrameworkClient::openSession(const std::string& name) {
    const auto device = deviceV3(name);
    if (!device.ok()) return failed<sp<Session>>(device);
    Answer<sp<Session>> answer;
    const auto result = device.value->open(new QuietDeviceCallback(),
                                           [&](Status status, const sp<Session>& session) {
                                               answer.status = status;
                                               answer.value = session;
                                           });
    answer.failure = failureOf(result);
    if (answer.ok() && answer.value == nullptr) answer.failure = "the camera gave no session";
    return answer;
}

Answer<bool> FrameworkClient::setTorchMode(const std::string& name, bool on) {
    using android::hardware::camera::common::V1_0::TorchMode;
    const auto device = deviceV3(name);
    if (!device.ok()) return failed<bool>(device);
    Answer<bool> answer;
    const Return<Status> result = device.value->setTorchMode(on ? TorchMode::ON : TorchMode::OFF);
    answer.failure = failureOf(result);
    if (answer.arrived()) answer.status = result;
    answer.value = answer.ok();
    return answer;
}

Answer<std::string> FrameworkClient::dump() {
    Answer<std::string> answer;
    // A file and not a pipe: it takes everything, without somebody who reads meanwhile.
    const android::base::unique_fd file(memfd_create("dump", MFD_CLOEXEC));
    native_handle_t* const handle = native_handle_create(1, 0);
    handle->data[0] = file.get();
    answer.failure = failureOf(mProvider->debug(android::hardware::hidl_handle(handle), {}));
    native_handle_delete(handle);
    lseek(file.get(), 0, SEEK_SET);
    if (answer.arrived() && !android::base::ReadFdToString(file.get(), &answer.value)) {
        answer.failure = "its text cannot be read";
    }
    return answer;
}

}  // namespace orvo::simulator
