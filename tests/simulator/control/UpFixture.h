// SPDX-License-Identifier: Apache-2.0
// UpFixture: real devices that `camerasim up` keeps, and their control sockets.

#pragma once

#include <memory>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "simulator/control/Protocol.h"
#include "tests/simulator/control/ControlTalk.h"
#include "tests/simulator/support/FreshDirectory.h"
#include "tests/simulator/support/ProgramRun.h"

namespace orvo::simulator::testing {

/** One device that is up; ended with its object if it is not stopped before. */
class DeviceRun {
  public:
    /** Starts it; awaitReady() before anything else. */
    DeviceRun(const std::string& temporary, const std::vector<std::string>& arguments);
    ~DeviceRun();

    /** Waits until it has booted and its first `cameras` cameras are there. */
    void awaitReady(int cameras);

    ProgramRun& program() { return mProgram; }
    /** Waits until it, and everybody whom it has started, has ended; once. */
    ProgramEnd awaitEnd();
    const std::string& root() const { return mRoot; }
    std::string socket() const { return mRoot + "/run/control"; }

    /** The result of a request; the test fails on an error. */
    nlohmann::json request(const nlohmann::json& request) const;
    /** The error of a request that must fail. */
    std::string refusal(const nlohmann::json& request) const;
    HeadsetState state() const;
    ProviderState provider(const std::string& instance) const;
    /** Waits for a condition; false if it is not met in 30 seconds. */
    bool waitFor(const std::vector<std::string>& condition) const;
    /** Everything on the timeline, as "kind who what". */
    std::vector<std::string> history() const;

  private:
    ProgramRun mProgram;
    bool mEnded = false;
    std::string mRoot;
};

/** Gives each test a TMPDIR of its own, so that whatever is left behind is found. */
class UpFixture : public ::testing::Test {
  protected:
    /** Boots the device directory, or the default one, and waits for its cameras. */
    std::unique_ptr<DeviceRun> boot(const std::vector<std::string>& arguments = {},
                                    int cameras = 6);
    /** A copy of the default device, to be changed. */
    std::string copiedDevice();
    void expectNothingIsLeft() const;

    FreshDirectory mTemporary;
    FreshDirectory mDevices;
};

constexpr char kBackCamera[] = "device@3.2/legacy/100";
constexpr char kUsbCamera[] = "device@3.2/legacy/usb-7C21";

}  // namespace orvo::simulator::testing
