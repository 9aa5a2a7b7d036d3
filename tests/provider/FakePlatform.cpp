// SPDX-License-Identifier: Apache-2.0
// The platform's functions of the entry point's tests.

#include "tests/provider/FakePlatform.h"

#include <dlfcn.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include <gtest/gtest.h>
#include <hidl/HidlTransportSupport.h>
#include <hidl/ServiceManagement.h>

namespace orvo::test {

using android::sp;
using android::hardware::hidl_string;
using android::hardware::hidl_vec;
using android::hardware::Return;
using HidlStatus = android::hardware::Status;
using android::hidl::base::V1_0::IBase;
using android::hidl::manager::V1_0::IServiceNotification;
using android::hidl::manager::V1_2::IClientCallback;
using android::hidl::manager::V1_2::IServiceManager;

namespace {

FakePlatform* gCurrent = nullptr;

template <typename Answer>
Answer unexpected(const char* operation, Answer answer) {
    ADD_FAILURE() << "the library asked the service manager to " << operation;
    return answer;
}

// What the library is allowed to ask of the service manager; anything else fails the test.
class FakeServiceManager : public IServiceManager, public CountedInstance {
  public:
    Return<sp<IBase>> get(const hidl_string&, const hidl_string&) override {
        return unexpected<sp<IBase>>("get", nullptr);
    }
    Return<bool> add(const hidl_string&, const sp<IBase>&) override {
        return unexpected("add", false);
    }
    Return<Transport> getTransport(const hidl_string&, const hidl_string&) override {
        return unexpected("getTransport", Transport::EMPTY);
    }
    Return<void> list(list_cb) override { return refuse("list"); }
    Return<void> listByInterface(const hidl_string&, listByInterface_cb) override {
        return refuse("listByInterface");
    }
    Return<bool> registerForNotifications(const hidl_string& descriptor,
                                          const hidl_string& instance,
                                          const sp<IServiceNotification>& callback) override {
        FakePlatform& platform = FakePlatform::current();
        const std::lock_guard<std::mutex> lock(platform.mutex);
        platform.registrations.push_back({descriptor, instance, callback});
        return platform.acceptsNotifications;
    }
    Return<void> debugDump(debugDump_cb) override { return refuse("debugDump"); }
    Return<void> registerPassthroughClient(const hidl_string&, const hidl_string&) override {
        return refuse("registerPassthroughClient");
    }
    Return<bool> unregisterForNotifications(const hidl_string&, const hidl_string&,
                                            const sp<IServiceNotification>&) override {
        return unexpected("unregisterForNotifications", false);
    }
    Return<bool> registerClientCallback(const hidl_string&, const hidl_string&, const sp<IBase>&,
                                        const sp<IClientCallback>&) override {
        return unexpected("registerClientCallback", false);
    }
    Return<bool> unregisterClientCallback(const sp<IBase>&, const sp<IClientCallback>&) override {
        return unexpected("unregisterClientCallback", false);
    }
    Return<bool> addWithChain(const hidl_string&, const sp<IBase>&,
                              const hidl_vec<hidl_string>&) override {
        return unexpected("addWithChain", false);
    }
    Return<void> listManifestByInterface(const hidl_string& descriptor,
                                         listManifestByInterface_cb _hidl_cb) override {
        FakePlatform& platform = FakePlatform::current();
        {
            const std::lock_guard<std::mutex> lock(platform.mutex);
            platform.queries.push_back(descriptor);
        }
        if (platform.queriesFail) return HidlStatus::fromStatusT(android::DEAD_OBJECT);
        _hidl_cb(std::vector<hidl_string>(platform.declared.begin(), platform.declared.end()));
        return android::hardware::Void();
    }
    Return<bool> tryUnregister(const hidl_string&, const hidl_string&, const sp<IBase>&) override {
        return unexpected("tryUnregister", false);
    }

  private:
    static Return<void> refuse(const char* operation) {
        unexpected(operation, 0);
        return android::hardware::Void();
    }
};

sp<IServiceManager> serviceManager() {
    if (!FakePlatform::current().hasServiceManager) return nullptr;
    return new FakeServiceManager;
}

FakePlatform::ICameraProvider* callMREntry(const char* name) {
    FakePlatform& platform = FakePlatform::current();
    {
        const std::lock_guard<std::mutex> lock(platform.mutex);
        platform.mrNames.push_back(name);
    }
    return platform.mrEntry ? platform.mrEntry(name) : nullptr;
}

// Not inlined, so that its caller has no locals.
__attribute__((noinline)) void* lookUpInMRLibrary(const char* symbol) {
    FakePlatform& platform = FakePlatform::current();
    if (platform.onLookUp) platform.onLookUp();
    const std::lock_guard<std::mutex> lock(platform.mutex);
    ++platform.symbolLookups;
    platform.symbol = symbol;
    if (!platform.libraryHasEntry) return nullptr;
    return reinterpret_cast<void*>(callMREntry);
}

// What dlopen hands out for the MR library.
char gLibraryHandle;
bool gLibraryWasOpened = false;  // Guarded by the platform's mutex while tests run.

}  // namespace

FakePlatform::FakePlatform() {
    if (gCurrent != nullptr) abort();
    gCurrent = this;
}

FakePlatform::~FakePlatform() {
    gCurrent = nullptr;
}

FakePlatform& FakePlatform::current() {
    if (gCurrent == nullptr) {
        fputs("the platform was called in a test without a FakePlatform\n", stderr);
        abort();
    }
    return *gCurrent;
}

bool FakePlatform::libraryWasOpened() {
    return gLibraryWasOpened;
}

}  // namespace orvo::test

namespace android::hardware {

using orvo::test::FakePlatform;

sp<::android::hidl::manager::V1_0::IServiceManager> defaultServiceManager() {
    return orvo::test::serviceManager();
}

sp<::android::hidl::manager::V1_1::IServiceManager> defaultServiceManager1_1() {
    return orvo::test::serviceManager();
}

sp<::android::hidl::manager::V1_2::IServiceManager> defaultServiceManager1_2() {
    return orvo::test::serviceManager();
}

namespace details {

sp<::android::hidl::base::V1_0::IBase> getRawServiceInternal(const std::string& descriptor,
                                                             const std::string& instance,
                                                             bool retry, bool getStub) {
    FakePlatform& platform = FakePlatform::current();
    const std::lock_guard<std::mutex> lock(platform.mutex);
    platform.lookups.push_back({descriptor, instance, retry, getStub});
    const auto found = platform.services.find(instance);
    return found == platform.services.end() ? nullptr : found->second;
}

}  // namespace details
}  // namespace android::hardware

// A compiler that is older than the attribute has a warning for it.
#if defined(__clang__) && __has_cpp_attribute(clang::disable_sanitizer_instrumentation)
#define ORVO_UNINSTRUMENTED \
    [[clang::disable_sanitizer_instrumentation, clang::no_sanitize("address", "undefined")]]
#else
#define ORVO_UNINSTRUMENTED
#endif

// The linker sends the calls of the program's own objects here.
extern "C" {

void* __real_dlopen(const char* path, int mode);
void* __real_dlsym(void* library, const char* symbol);
char* __real_dlerror();
FILE* __real_fopen(const char* path, const char* mode);

void* __wrap_dlopen(const char* path, int mode) {
    using orvo::test::FakePlatform;
    if (strcmp(path, FakePlatform::kMRLibrary) != 0) return __real_dlopen(path, mode);
    FakePlatform& platform = FakePlatform::current();
    if (platform.onOpen) platform.onOpen();
    const std::lock_guard<std::mutex> lock(platform.mutex);
    ++platform.opens;
    platform.openMode = mode;
    if (!platform.libraryOpens) return nullptr;
    orvo::test::gLibraryWasOpened = true;
    return &orvo::test::gLibraryHandle;
}

// A sanitizer's runtime calls it, too, before anything that was instrumented may run; what has no
// locals of its own is not.
ORVO_UNINSTRUMENTED void* __wrap_dlsym(void* library, const char* symbol) {
    if (library != &orvo::test::gLibraryHandle) return __real_dlsym(library, symbol);
    return orvo::test::lookUpInMRLibrary(symbol);
}

char* __wrap_dlerror() {
    static char text[] = "no such library here";
    return text;
}

FILE* __wrap_fopen(const char* path, const char* mode) {
    using orvo::test::FakePlatform;
    if (strcmp(path, FakePlatform::kMapFile) != 0) return __real_fopen(path, mode);
    const std::string& text = FakePlatform::current().mapText;
    if (text.empty()) return nullptr;
    return fmemopen(const_cast<char*>(text.data()), text.size(), mode);
}

}  // extern "C"
