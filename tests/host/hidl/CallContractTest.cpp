// SPDX-License-Identifier: Apache-2.0
// The call contract: which code means which method, and which methods nobody waits for.

#include <ctype.h>
#include <stdint.h>

#include <algorithm>
#include <fstream>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

struct Method {
    uint32_t code;
    std::string name;
    bool isOneway;

    bool operator==(const Method& other) const {
        return code == other.code && name == other.name && isOneway == other.isOneway;
    }
};

void PrintTo(const Method& method, std::ostream* stream) {
    *stream << method.code << " " << (method.isOneway ? "oneway " : "") << method.name;
}

/** One interface: the directory of its generated code, its name, and its own methods. */
struct Interface {
    std::string package;
    std::string name;
    std::vector<Method> methods;
};

void PrintTo(const Interface& interface, std::ostream* stream) {
    *stream << interface.package << " I" << interface.name;
}

const std::vector<Interface> kInterfaces = {
        {"android/hidl/base/1.0",
         "Base",
         {
                 {256067662, "interfaceChain", false},
                 {256131655, "debug", false},
                 {256136003, "interfaceDescriptor", false},
                 {256398152, "getHashChain", false},
                 {256462420, "setHALInstrumentation", true},
                 {256660548, "linkToDeath", false},
                 {256921159, "ping", false},
                 {257049926, "getDebugInfo", false},
                 {257120595, "notifySyspropsChanged", true},
                 {257250372, "unlinkToDeath", false},
         }},
        {"android/hidl/manager/1.0",
         "ServiceManager",
         {
                 {1, "get", false},
                 {2, "add", false},
                 {3, "getTransport", false},
                 {4, "list", false},
                 {5, "listByInterface", false},
                 {6, "registerForNotifications", false},
                 {7, "debugDump", false},
                 {8, "registerPassthroughClient", false},
         }},
        {"android/hidl/manager/1.0",
         "ServiceNotification",
         {
                 {1, "onRegistration", true},
         }},
        {"android/hidl/manager/1.1",
         "ServiceManager",
         {
                 {9, "unregisterForNotifications", false},
         }},
        {"android/hidl/manager/1.2",
         "ClientCallback",
         {
                 {1, "onClients", true},
         }},
        {"android/hidl/manager/1.2",
         "ServiceManager",
         {
                 {10, "registerClientCallback", false},
                 {11, "unregisterClientCallback", false},
                 {12, "addWithChain", false},
                 {13, "listManifestByInterface", false},
                 {14, "tryUnregister", false},
         }},
        {"android/hardware/camera/provider/2.4",
         "CameraProvider",
         {
                 {1, "setCallback", false},
                 {2, "getVendorTags", false},
                 {3, "getCameraIdList", false},
                 {4, "isSetTorchModeSupported", false},
                 {5, "getCameraDeviceInterface_V1_x", false},
                 {6, "getCameraDeviceInterface_V3_x", false},
         }},
        {"android/hardware/camera/provider/2.4",
         "CameraProviderCallback",
         {
                 {1, "cameraDeviceStatusChange", false},
                 {2, "torchModeStatusChange", false},
         }},
        {"android/hardware/camera/device/1.0",
         "CameraDevice",
         {
                 {1, "getResourceCost", false},
                 {2, "getCameraInfo", false},
                 {3, "setTorchMode", false},
                 {4, "dumpState", false},
                 {5, "open", false},
                 {6, "setPreviewWindow", false},
                 {7, "enableMsgType", false},
                 {8, "disableMsgType", false},
                 {9, "msgTypeEnabled", false},
                 {10, "startPreview", false},
                 {11, "stopPreview", false},
                 {12, "previewEnabled", false},
                 {13, "storeMetaDataInBuffers", false},
                 {14, "startRecording", false},
                 {15, "stopRecording", false},
                 {16, "recordingEnabled", false},
                 {17, "releaseRecordingFrame", false},
                 {18, "releaseRecordingFrameHandle", false},
                 {19, "releaseRecordingFrameHandleBatch", false},
                 {20, "autoFocus", false},
                 {21, "cancelAutoFocus", false},
                 {22, "takePicture", false},
                 {23, "cancelPicture", false},
                 {24, "setParameters", false},
                 {25, "getParameters", false},
                 {26, "sendCommand", false},
                 {27, "close", false},
         }},
        {"android/hardware/camera/device/1.0",
         "CameraDeviceCallback",
         {
                 {1, "notifyCallback", false},
                 {2, "registerMemory", false},
                 {3, "unregisterMemory", false},
                 {4, "dataCallback", false},
                 {5, "dataCallbackTimestamp", false},
                 {6, "handleCallbackTimestamp", false},
                 {7, "handleCallbackTimestampBatch", false},
         }},
        {"android/hardware/camera/device/1.0",
         "CameraDevicePreviewCallback",
         {
                 {1, "dequeueBuffer", false},
                 {2, "enqueueBuffer", false},
                 {3, "cancelBuffer", false},
                 {4, "setBufferCount", false},
                 {5, "setBuffersGeometry", false},
                 {6, "setCrop", false},
                 {7, "setUsage", false},
                 {8, "setSwapInterval", false},
                 {9, "getMinUndequeuedBufferCount", false},
                 {10, "setTimestamp", false},
         }},
        {"android/hardware/camera/device/3.2",
         "CameraDevice",
         {
                 {1, "getResourceCost", false},
                 {2, "getCameraCharacteristics", false},
                 {3, "setTorchMode", false},
                 {4, "open", false},
                 {5, "dumpState", false},
         }},
        {"android/hardware/camera/device/3.2",
         "CameraDeviceCallback",
         {
                 {1, "processCaptureResult", false},
                 {2, "notify", false},
         }},
        {"android/hardware/camera/device/3.2",
         "CameraDeviceSession",
         {
                 {1, "constructDefaultRequestSettings", false},
                 {2, "configureStreams", false},
                 {3, "processCaptureRequest", false},
                 {4, "getCaptureRequestMetadataQueue", false},
                 {5, "getCaptureResultMetadataQueue", false},
                 {6, "flush", false},
                 {7, "close", false},
         }},
};

/** What the generated stub of the interface serves, without what all interfaces share. */
std::vector<Method> servedMethods(const Interface& interface) {
    const std::string path =
            std::string(GENERATED_DIR) + "/" + interface.package + "/" + interface.name + "All.cpp";
    std::ifstream file(path);
    EXPECT_TRUE(file) << path;
    std::stringstream text;
    text << file.rdbuf();
    const std::string source = text.str();

    const std::regex served(
            "case (\\d+) /\\* (\\w+) \\*/:\\s*\\{\\s*bool _hidl_is_oneway = [^;]*;"
            "\\s*if \\(_hidl_is_oneway != (true|false)\\)");
    constexpr uint32_t kFirstReserved = 0x0f000000;
    std::vector<Method> methods;
    for (std::sregex_iterator match(source.begin(), source.end(), served), end; match != end;
         ++match) {
        const uint32_t code = static_cast<uint32_t>(std::stoul((*match)[1]));
        if (code >= kFirstReserved && interface.name != "Base") continue;
        methods.push_back({code, (*match)[2], (*match)[3] == "true"});
    }
    return methods;
}

class CallContractTest : public testing::TestWithParam<Interface> {};

TEST_P(CallContractTest, CodesMeanTheMethodsOfThePlatform) {
    std::vector<Method> served = servedMethods(GetParam());
    // A derived interface serves its parent's methods, too; those are the parent's row.
    const uint32_t first = GetParam().methods.front().code;
    served.erase(std::remove_if(served.begin(), served.end(),
                                [first](const Method& method) { return method.code < first; }),
                 served.end());
    EXPECT_EQ(GetParam().methods, served);
}

std::string nameOfTest(const testing::TestParamInfo<Interface>& info) {
    std::string name = info.param.package + "_I" + info.param.name;
    for (char& c : name) c = isalnum(static_cast<unsigned char>(c)) ? c : '_';
    return name;
}

INSTANTIATE_TEST_SUITE_P(AllInterfaces, CallContractTest, testing::ValuesIn(kInterfaces),
                         nameOfTest);

}  // namespace
