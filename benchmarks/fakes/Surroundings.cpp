// SPDX-License-Identifier: Apache-2.0
// Makes the providers, the map file and the shims.

#include "benchmarks/fakes/Surroundings.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <android/hidl/manager/1.2/IServiceManager.h>
#include <hidl/ServiceManagement.h>

#include "benchmarks/fakes/ManifestOnly.h"

namespace orvo::benchmarks {

using android::sp;
using android::hardware::hidl_string;

namespace {

Surroundings* gCurrent = nullptr;

constexpr char kMapFile[] = "/vendor/etc/orvo_vendor_manifest.xml";

}  // namespace

Surroundings::Surroundings(size_t providerCount, size_t idCount, size_t sectionCount) {
    if (gCurrent != nullptr) abort();
    gCurrent = this;
    mMapText = "<manifest>\n";
    mDeclared.resize(providerCount);
    for (size_t i = 0; i < providerCount; ++i) {
        const std::string name = instance(i);
        mProviders.push_back(new AnsweringProvider(name, idCount, sectionCount));
        mDeclared[i] = name;
        mMapText += "  <instance replace=\"" + name + "\">" + kAggregator + "</instance>\n";
        presetProperty("camera." + type(i) + ".ids", "");
    }
    mMapText += "</manifest>\n";
}

Surroundings::~Surroundings() {
    gCurrent = nullptr;
}

Surroundings& Surroundings::current() {
    if (gCurrent == nullptr) {
        fputs("the platform was called while there are no surroundings\n", stderr);
        abort();
    }
    return *gCurrent;
}

std::string Surroundings::type(size_t index) {
    return "vendor" + std::to_string(10 + index);
}

std::string Surroundings::providerDevice(size_t provider, size_t device) {
    return "device@3.2/" + type(provider) + "/" + std::to_string(device);
}

std::string Surroundings::frameworkDevice(size_t device) {
    return "device@3.2/legacy/" + std::to_string(device);
}

sp<AnsweringProvider> Surroundings::find(const std::string& instance) const {
    const size_t number = strtoul(instance.c_str() + strlen("vendor"), nullptr, 10) - 10;
    return number < mProviders.size() ? mProviders[number] : nullptr;
}

}  // namespace orvo::benchmarks

namespace android::hardware {

using orvo::benchmarks::Surroundings;

sp<::android::hidl::manager::V1_2::IServiceManager> defaultServiceManager1_2() {
    return new orvo::benchmarks::ManifestOnly;
}

namespace details {

sp<::android::hidl::base::V1_0::IBase> getRawServiceInternal(const std::string&,
                                                             const std::string& instance, bool,
                                                             bool) {
    return Surroundings::current().find(instance);
}

}  // namespace details
}  // namespace android::hardware

extern "C" android::hardware::camera::provider::V2_4::ICameraProvider*
HIDL_FETCH_ICameraProvider_shim(
        const char*, android::hardware::camera::provider::V2_4::ICameraProvider* provider) {
    return provider;
}

// The linker sends the calls of the program's own objects here.
extern "C" FILE* __real_fopen(const char* path, const char* mode);

extern "C" FILE* __wrap_fopen(const char* path, const char* mode) {
    if (strcmp(path, orvo::benchmarks::kMapFile) != 0) return __real_fopen(path, mode);
    const std::string& text = orvo::benchmarks::Surroundings::current().mapText();
    return fmemopen(const_cast<char*>(text.data()), text.size(), mode);
}
