// SPDX-License-Identifier: Apache-2.0
// What providers, shims and the framework do when they are called.

#include "tests/interleavings/Peers.h"

#include <algorithm>

namespace orvo::interleavings {

using android::DEAD_OBJECT;
using android::sp;
using android::hardware::hidl_string;
using android::hardware::Return;
using android::hardware::Void;
using android::hardware::camera::common::V1_0::CameraDeviceStatus;
using android::hardware::camera::common::V1_0::TorchModeStatus;
using android::hardware::camera::common::V1_0::VendorTagSection;
using HidlStatus = android::hardware::Status;

void Peer::begin(const std::string& kind, bool changes) {
    Step call;
    call.kind = kind;
    call.detail = mProcess.name + " (process " + std::to_string(mGeneration) + ")";
    (changes ? call.writes : call.reads) = mProcess.cell;
    World::current()->machine().before(call);
    World::current()->expectHeld(this, mProcess.shimCell, kind);
}

void Peer::end(const std::string& kind) {
    World::current()->machine().after();
    World::current()->expectHeld(this, mProcess.shimCell, kind);
}

// Answers if the process is there, and fails in transport if not.
template <typename Answer>
Return<void> Peer::forward(const std::string& kind, const Answer& answer) {
    begin(kind);
    const bool answers = isAlive();
    if (answers) answer();
    end(kind);
    if (!answers) return HidlStatus::fromStatusT(DEAD_OBJECT);
    return Void();
}

Return<Peer::Status> Peer::setCallback(const sp<ICameraProviderCallback>&) {
    begin("register", true);
    const bool answers = isAlive();
    if (answers) mProcess.registered = true;
    end("register");
    if (!answers) return HidlStatus::fromStatusT(DEAD_OBJECT);
    return Status::OK;
}

// The two whose failure the library leaves unexamined, which ends the process.
Return<void> Peer::getVendorTags(getVendorTags_cb _hidl_cb) {
    begin("ask for tags");
    if (!isAlive()) World::current()->endProcess("no vendor tags of " + mProcess.name);
    end("ask for tags");
    VendorTagSection section;
    section.sectionName = "process " + std::to_string(mGeneration);
    _hidl_cb(Status::OK, {section});
    return Void();
}

Return<void> Peer::getCameraIdList(getCameraIdList_cb _hidl_cb) {
    begin("ask for ids");
    if (!isAlive()) World::current()->endProcess("no camera ids of " + mProcess.name);
    end("ask for ids");
    _hidl_cb(Status::OK, {mProcess.name + "#" + std::to_string(mGeneration)});
    return Void();
}

Return<void> Peer::isSetTorchModeSupported(isSetTorchModeSupported_cb _hidl_cb) {
    return forward("ask for torch support", [&] { _hidl_cb(Status::OK, true); });
}

Return<void> Peer::getCameraDeviceInterface_V1_x(const hidl_string&,
                                                 getCameraDeviceInterface_V1_x_cb _hidl_cb) {
    return forward("ask for the interface", [&] { _hidl_cb(Status::OK, nullptr); });
}

Return<void> Peer::getCameraDeviceInterface_V3_x(const hidl_string&,
                                                 getCameraDeviceInterface_V3_x_cb _hidl_cb) {
    return forward("ask for the interface", [&] { _hidl_cb(Status::OK, nullptr); });
}

Return<bool> Peer::linkToDeath(const sp<Recipient>& recipient, uint64_t cookie) {
    begin("link to the death of", true);
    const bool answers = isAlive();
    if (answers) mProcess.links.push_back({recipient, cookie});
    end("link to the death of");
    if (!answers) return HidlStatus::fromStatusT(DEAD_OBJECT);
    return true;
}

Return<bool> Peer::unlinkToDeath(const sp<Recipient>& recipient) {
    begin("unlink from the death of", true);
    auto& links = mProcess.links;
    const auto link = std::find_if(links.begin(), links.end(), [&](const auto& one) {
        return one.recipient.unsafe_get() == recipient.get();
    });
    const bool found = isAlive() && link != links.end();
    if (found) links.erase(link);
    end("unlink from the death of");
    return found;
}

Return<void> Framework::hear(const std::string& name, const std::string& what) {
    World& world = *World::current();
    Step call;
    call.kind = "tell the framework";
    call.detail = name + " " + what + " (callback " + std::to_string(number) + ")";
    call.writes = World::cameraCell(name);
    world.machine().before(call);
    world.expectHeld(this, kCallbackHeldCell, call.detail);
    world.tell(number, name, what);
    world.machine().after();
    world.expectHeld(this, kCallbackHeldCell, call.detail);
    return Void();
}

Return<void> Framework::cameraDeviceStatusChange(const hidl_string& name,
                                                 CameraDeviceStatus status) {
    static const char* const kTexts[] = {"absent", "present", "enumerating"};
    return hear(name, kTexts[static_cast<int>(status)]);
}

Return<void> Framework::torchModeStatusChange(const hidl_string& name, TorchModeStatus /* on */) {
    return hear(name, "torch");
}

}  // namespace orvo::interleavings
