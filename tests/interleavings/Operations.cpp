// SPDX-License-Identifier: Apache-2.0
// Performs the operations of a run.

#include <algorithm>
#include <utility>

#include "tests/interleavings/Faults.h"
#include "tests/interleavings/Peers.h"

namespace orvo::interleavings {

using android::sp;
using android::hardware::Return;
using android::hardware::camera::common::V1_0::CameraDeviceStatus;
using android::hardware::camera::common::V1_0::Status;
using android::hardware::camera::common::V1_0::TorchModeStatus;

void World::perform(const Operation& operation) {
    const std::string kind = operation.kind();
    if (kind == "report") return report(operation);
    if (kind == "torch") {
        mObject->torchModeStatusChange(mScenario.device(operation), TorchModeStatus::AVAILABLE_ON);
        return;
    }
    if (kind == "setCallback") {
        return setCallback(operation.what == 'B' ? makeFramework(2) : nullptr);
    }
    if (kind == "death") return die(process(mScenario.provider(operation.provider)));
    if (kind == "load default/0" || kind == "load legacy/0") return load(operation);
    ask(operation);
}

void World::report(const Operation& operation) {
    CameraDeviceStatus status = CameraDeviceStatus::PRESENT;
    if (operation.what == '-') status = CameraDeviceStatus::NOT_PRESENT;
    if (operation.what == '~') status = CameraDeviceStatus::ENUMERATING;
    mObject->cameraDeviceStatusChange(mScenario.device(operation), status);
}

sp<Framework> World::makeFramework(int number) {
    const sp<Framework> framework = new Framework(number);
    mMemories.push_back(framework);
    return framework;
}

// That it has returned is part of what the framework sees, in order. It keeps no reference.
void World::setCallback(sp<Framework> framework) {
    const std::string now = framework == nullptr ? "null" : std::to_string(framework->number);
    const Return<Status> result = mObject->setCallback(framework);
    framework.clear();
    const bool done = result.isOk() && Status(result) == Status::OK;
    Step returned;
    returned.kind = "return from setCallback";
    returned.writes = allCameraCells();
    mMachine.before(returned);
    for (auto& [camera, told] : mTold) told += "[callback " + now + "] ";
    mMachine.after();
    answer(done ? "registered" : "not registered");
}

// Its first step has been decided on.
void World::die(ProviderProcess& process) {
    const sp<Peer> dead = std::exchange(process.service, nullptr);
    std::vector<ProviderProcess::Link> links = std::exchange(process.links, {});
    // Those of failed attempts add up; so many are enough.
    links.resize(std::min<size_t>(links.size(), kMostStarted));
    process.alive = false;
    mMachine.after();
    for (const ProviderProcess::Link& link : links) {
        const auto recipient = link.recipient.promote();
        if (recipient != nullptr) recipient->serviceDied(link.cookie, nullptr);
    }
}

void World::ask(const Operation& operation) {
    int answers = 0;
    const auto answered = [&](Status status, const std::string& text) {
        ++answers;
        mMachine.pass("answer", operation.text());
        answer(android::hardware::camera::common::V1_0::toString(status) + " " + text);
    };
    const auto device = [&](Status status, const auto&) { answered(status, ""); };
    const std::string name = Scenario::frameworkDevice(operation);
    const Return<void> result = [&]() -> Return<void> {
        switch (operation.what) {
            case 'L':
                return mObject->getCameraIdList([&](Status status, const auto& names) {
                    std::string text;
                    for (const std::string one : names) text += one + " ";
                    answered(status, text);
                });
            case 'V':
                return mObject->getVendorTags([&](Status status, const auto& sections) {
                    std::string text;
                    for (const auto& one : sections) text += std::string(one.sectionName) + " ";
                    answered(status, text);
                });
            case 'T':
                return mObject->isSetTorchModeSupported(
                        [&](Status status, bool yes) { answered(status, yes ? "yes" : "no"); });
            case 'i':
                return mObject->getCameraDeviceInterface_V1_x(name, device);
            default:
                return mObject->getCameraDeviceInterface_V3_x(name, device);
        }
    }();
    if (!result.isOk()) answer("transport failure");
    if (answers != (result.isOk() ? 1 : 0)) {
        mMachine.fail("the answer to " + operation.text() + " was given " +
                      std::to_string(answers) + " times");
    }
}

void World::load(const Operation& operation) {
    if (operation.what == 'M') {
        answer(loadInstance("default/0") == mMrProvider.get() ? "it" : "null");
        return;
    }
    // What the entry point does once it has read the map.
    const sp<Object> object = makeObject(mObject->mProviderName.c_str(), mProxy, mMapper);
    mFurther.push_back(object);
    object->initialize();
}

}  // namespace orvo::interleavings
