// SPDX-License-Identifier: Apache-2.0
// ProviderControl: each request is one call on the simulation's state.

#include "simulator/provider/ProviderControl.h"

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <utility>

namespace orvo::simulator {

using android::hardware::Return;
using android::hardware::Void;
using vendor::orvo::simulator::V1_0::ListenerState;
using vendor::orvo::simulator::V1_0::ProviderState;
using vendor::orvo::simulator::V1_0::Result;

namespace {

/** A waiting request holds a thread of the pool, so no request may hold one for ever. */
constexpr std::chrono::milliseconds kLongestWait{60000};

constexpr char kNoSuchAnswer[] = "there is no such operation or status";

}  // namespace

ProviderControl::ProviderControl(std::shared_ptr<SimulatedCameras> cameras)
    : mCameras(std::move(cameras)) {}

Return<void> ProviderControl::setDeviceStatus(const hidl_string& name, CameraDeviceStatus status,
                                              setDeviceStatus_cb _hidl_cb) {
    const Outcome outcome = mCameras->setDeviceStatus(name, status);
    _hidl_cb(outcome.result, outcome.message);
    return Void();
}

Return<void> ProviderControl::setTorchStatus(const hidl_string& name, TorchModeStatus status,
                                             setTorchStatus_cb _hidl_cb) {
    const Outcome outcome = mCameras->setTorchStatus(name, status);
    _hidl_cb(outcome.result, outcome.message);
    return Void();
}

Return<void> ProviderControl::answerWith(Operation operation, Status status, bool withData,
                                         answerWith_cb _hidl_cb) {
    const bool done = mCameras->script().answerWith(operation, {status, withData});
    _hidl_cb(done ? Result::OK : Result::ILLEGAL_ARGUMENT, done ? "" : kNoSuchAnswer);
    return Void();
}

Return<void> ProviderControl::answerNormally(Operation operation, answerNormally_cb _hidl_cb) {
    const bool done = mCameras->script().answerNormally(operation);
    _hidl_cb(done ? Result::OK : Result::ILLEGAL_ARGUMENT, done ? "" : kNoSuchAnswer);
    return Void();
}

Return<void> ProviderControl::getState(getState_cb _hidl_cb) {
    ProviderState state;
    state.instance = mCameras->description().instance;
    state.pid = getpid();
    state.hasListener = mCameras->reporter().hasListener();
    state.devices = mCameras->state();
    state.operations = mCameras->script().state();
    _hidl_cb(state);
    return Void();
}

Return<bool> ProviderControl::settle(uint32_t timeoutMs) {
    const auto wait = std::min(kLongestWait, std::chrono::milliseconds(timeoutMs));
    return mCameras->reporter().settle(wait);
}

Return<void> ProviderControl::awaitListener(uint64_t count, uint32_t timeoutMs,
                                            awaitListener_cb _hidl_cb) {
    const auto wait = std::min(kLongestWait, std::chrono::milliseconds(timeoutMs));
    const auto [changes, present] = mCameras->reporter().awaitListener(count, wait);
    ListenerState state;
    state.count = changes;
    state.hasListener = present;
    _hidl_cb(state);
    return Void();
}

}  // namespace orvo::simulator
