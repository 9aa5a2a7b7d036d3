// SPDX-License-Identifier: Apache-2.0
// Device names: how they are taken apart, and how the provider object translates them back and
// forth while devices come and go.
//
// An input is a list of lines. The first character of each says what happens with the rest of it:
// '+' a provider reports that device present, '-' not present, '~' enumerating, '?' the framework
// asks for that device, '!' the provider of that name dies. Any other line is only taken apart.

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "fuzz/support/Require.h"
#include "fuzz/support/Surroundings.h"
#include "provider/OrvoCameraServiceImplementation.h"
#include "provider/naming/DeviceInfo.h"
#include "tests/support/FakeProperties.h"
#include "tests/support/FakeProviderMapper.h"
#include "tests/support/FakeServiceInteractionProxy.h"
#include "tests/support/FakeShimFactory.h"
#include "tests/support/RecordingCallback.h"

namespace {

namespace implementation = android::hardware::camera::provider::V2_4::implementation;

using android::sp;
using android::hardware::camera::common::V1_0::CameraDeviceStatus;
using android::hardware::camera::common::V1_0::Status;
using implementation::DeviceInfo;
using implementation::OrvoCameraServiceImplementation;
using implementation::parseDeviceString;
using orvo::fuzz::require;

using Names = std::map<std::string, std::string>;

/** A device name by the grammar, read character by character. */
struct Grammar {
    explicit Grammar(const std::string& name) {
        for (const char c : name) {
            if (part == 0 && c == '@') {
                part = 1;
            } else if ((part == 1 || part == 2) && c == '/') {
                part++;
            } else {
                parts[part] += c;
            }
        }
    }
    bool parses() const { return part >= 2; }
    /** What a part is worth: one that its separator does not end is none, but for the last. */
    std::string value(int which) const { return which < part || parses() ? parts[which] : ""; }
    bool complete() const {
        return parses() && !parts[0].empty() && !parts[1].empty() && !parts[2].empty() &&
               !parts[3].empty();
    }

    int part = 0;
    std::string parts[4];
};

void checkParsing(const std::string& name) {
    DeviceInfo info{"left", "over", "from", "before"};
    const bool parsed = parseDeviceString(name, info);
    const Grammar expected(name);
    require(parsed == expected.parses(), "a name parses if the grammar says so", name);
    require(info.prefix == expected.value(0) && info.version == expected.value(1) &&
                    info.type == expected.value(2) && info.id == expected.value(3),
            "the parts are those of the grammar", name);
}

/** The provider object, and beside it what it should know. */
class Session {
  public:
    Session()
        : mProxy(std::make_shared<orvo::test::FakeServiceInteractionProxy>()),
          mMapper(std::make_shared<orvo::test::FakeProviderMapper>()),
          mFramework(new orvo::test::RecordingCallback) {
        mMapper->replacements["legacy/0"] = {"external/0"};
        mObject = new OrvoCameraServiceImplementation("legacy/0", mProxy, mMapper);
        require(mObject->setCallback(mFramework) == Status::OK, "the callback is taken");
    }

    void report(const std::string& name, CameraDeviceStatus status) {
        // The required answer to an empty name is the end of the process.
        if (name.empty()) return;
        const Grammar parts(name);
        const std::string frameworkName =
                parts.value(0) + "@" + parts.value(1) + "/legacy/" + parts.value(3);
        require(mObject->providerDeviceNameToAndroidDeviceName(name) == frameworkName,
                "the framework's name differs in the type only", name);
        const size_t before = mFramework->notifications().size();
        require(mObject->cameraDeviceStatusChange(name, status).isOk(), "a report is taken");
        if (status == CameraDeviceStatus::PRESENT) mExpected[frameworkName] = name;
        if (status == CameraDeviceStatus::NOT_PRESENT) mExpected.erase(frameworkName);
        require(mFramework->notifications().size() == before + 1 &&
                        mFramework->notifications().back() ==
                                orvo::test::deviceNotification(frameworkName, status),
                "the framework hears of it under its name", name);
        checkDevices();
    }

    void ask(const std::string& name) {
        const std::string answer = mObject->androidDeviceNameToProviderDeviceName(name);
        if (!Grammar(name).complete()) {
            require(answer == name, "a name that is not one is left alone", name);
        } else {
            require(answer == mExpected[name], "the name by which it was reported", name);
        }
        checkDevices();
    }

    void die(const std::string& providerName) {
        const size_t before = mFramework->notifications().size();
        std::vector<std::string> gone;
        const size_t slash = providerName.find('/');
        for (auto next = mExpected.begin(); next != mExpected.end();) {
            const auto entry = next++;
            const Grammar parts(entry->second);
            if (slash == std::string::npos || !parts.parses()) continue;
            if (parts.parts[2] != providerName.substr(0, slash)) continue;
            gone.push_back(entry->first);
            mExpected.erase(entry);
        }
        require(mObject->removeAndNotifyDevicesByProviderName(providerName) == gone.size(),
                "as many devices go as are of the type", providerName);
        const auto heard = mFramework->notifications();
        require(heard.size() == before + gone.size(), "each is reported once", providerName);
        for (size_t i = 0; i < gone.size(); i++) {
            require(heard[before + i] == orvo::test::deviceNotification(
                                                 gone[i], CameraDeviceStatus::NOT_PRESENT),
                    "devices go in the order of their names", gone[i]);
        }
        checkDevices();
    }

  private:
    void checkDevices() {
        const std::lock_guard<std::mutex> lock(mObject->mActiveDevicesMutex);
        require(mObject->mActiveDevices == mExpected, "the active devices are the expected ones");
    }

    orvo::test::FakeProperties mProperties;
    orvo::test::FakeShimFactory mShims;
    std::shared_ptr<orvo::test::FakeServiceInteractionProxy> mProxy;
    std::shared_ptr<orvo::test::FakeProviderMapper> mMapper;
    sp<orvo::test::RecordingCallback> mFramework;
    sp<OrvoCameraServiceImplementation> mObject;
    Names mExpected;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    [[maybe_unused]] static const bool quiet = [] {
        orvo::fuzz::silenceLog();
        return true;
    }();
    // Everything is logged with all active devices, which makes long lists slow.
    if (size > 4096) return 0;

    Session session;
    std::string text(reinterpret_cast<const char*>(data), size);
    while (!text.empty()) {
        const size_t end = text.find('\n');
        const std::string line = text.substr(0, end);
        text.erase(0, end == std::string::npos ? end : end + 1);
        checkParsing(line);
        if (line.empty()) continue;
        const std::string name = line.substr(1);
        checkParsing(name);
        if (line[0] == '+') session.report(name, CameraDeviceStatus::PRESENT);
        if (line[0] == '-') session.report(name, CameraDeviceStatus::NOT_PRESENT);
        if (line[0] == '~') session.report(name, CameraDeviceStatus::ENUMERATING);
        if (line[0] == '?') session.ask(name);
        if (line[0] == '!') session.die(name);
    }
    return 0;
}
