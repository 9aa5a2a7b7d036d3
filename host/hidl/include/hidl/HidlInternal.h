// SPDX-License-Identifier: Apache-2.0
// What generated code and the other headers of this directory need below all HIDL types.

#pragma once

#include <dirent.h>
#include <stdint.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace android {
namespace hardware {
namespace details {

/** Tags by which templates tell apart pure interfaces, stubs, proxies and in-process wrappers. */
struct i_tag {};
struct bnhw_tag {};
struct bphw_tag {};
struct bs_tag {};

/** Logs at FATAL and aborts. */
[[noreturn]] void logAlwaysFatal(const char* message);

/** "-<version>" from ro.vndk.version; "" if that is not set or is "current". */
std::string getVndkVersionStr();

#if defined(__LP64__)
#define HAL_LIBRARY_PATH_SYSTEM "/system/lib64/hw/"
#define HAL_LIBRARY_PATH_VNDK_SP_FOR_VERSION "/system/lib64/vndk-sp%s/hw/"
#define HAL_LIBRARY_PATH_VENDOR "/vendor/lib64/hw/"
#define HAL_LIBRARY_PATH_ODM "/odm/lib64/hw/"
#else
#define HAL_LIBRARY_PATH_SYSTEM "/system/lib/hw/"
#define HAL_LIBRARY_PATH_VNDK_SP_FOR_VERSION "/system/lib/vndk-sp%s/hw/"
#define HAL_LIBRARY_PATH_VENDOR "/vendor/lib/hw/"
#define HAL_LIBRARY_PATH_ODM "/odm/lib/hw/"
#endif
#define HAL_LIBRARY_PATH_SYSTEM_64BIT "/system/lib64/hw/"
#define HAL_LIBRARY_PATH_SYSTEM_32BIT "/system/lib/hw/"
#define HAL_LIBRARY_PATH_VNDK_SP_64BIT_FOR_VERSION "/system/lib64/vndk-sp%s/hw/"
#define HAL_LIBRARY_PATH_VNDK_SP_32BIT_FOR_VERSION "/system/lib/vndk-sp%s/hw/"
#define HAL_LIBRARY_PATH_VENDOR_64BIT "/vendor/lib64/hw/"
#define HAL_LIBRARY_PATH_VENDOR_32BIT "/vendor/lib/hw/"
#define HAL_LIBRARY_PATH_ODM_64BIT "/odm/lib64/hw/"
#define HAL_LIBRARY_PATH_ODM_32BIT "/odm/lib/hw/"

/** Ends the life of an element of raw storage; null is ignored. */
template <typename T>
void destructElement(T* element) {
    if (element != nullptr) element->~T();
}

/** A pointer that takes eight bytes everywhere and owns nothing. */
template <typename T>
struct hidl_pointer {
    hidl_pointer() : mBits(0) {}
    hidl_pointer(T* pointer) : hidl_pointer() { mPointer = pointer; }
    hidl_pointer(const hidl_pointer& other) : hidl_pointer(other.mPointer) {}
    hidl_pointer(hidl_pointer&& other) noexcept : hidl_pointer(other.mPointer) { other = nullptr; }

    hidl_pointer& operator=(T* pointer) {
        mBits = 0;
        mPointer = pointer;
        return *this;
    }
    hidl_pointer& operator=(const hidl_pointer& other) { return *this = other.mPointer; }
    hidl_pointer& operator=(hidl_pointer&& other) noexcept {
        T* pointer = other.mPointer;
        other = nullptr;
        return *this = pointer;
    }

    operator T*() const { return mPointer; }
    explicit operator void*() const { return mPointer; }
    T& operator*() const { return *mPointer; }
    T* operator->() const { return mPointer; }
    T& operator[](size_t index) { return mPointer[index]; }
    const T& operator[](size_t index) const { return mPointer[index]; }

  private:
    union {
        T* mPointer;
        uint64_t mBits;
    };
};

/**
 * Base of stubs, proxies and wrappers, which report calls to instrumentation libraries on devices.
 * No such library is ever loaded here: instrumentation is always off and the list is empty.
 */
struct HidlInstrumentor {
    enum InstrumentationEvent {
        SERVER_API_ENTRY = 0,
        SERVER_API_EXIT,
        CLIENT_API_ENTRY,
        CLIENT_API_EXIT,
        SYNC_CALLBACK_ENTRY,
        SYNC_CALLBACK_EXIT,
        ASYNC_CALLBACK_ENTRY,
        ASYNC_CALLBACK_EXIT,
        PASSTHROUGH_ENTRY,
        PASSTHROUGH_EXIT,
    };

    using InstrumentationCallback = std::function<void(
            const InstrumentationEvent event, const char* package, const char* version,
            const char* interface, const char* method, std::vector<void*>* args)>;

    explicit HidlInstrumentor(const std::string& package, const std::string& interface);
    virtual ~HidlInstrumentor();

    const std::vector<InstrumentationCallback>& getInstrumentationCallbacks();
    bool isInstrumentationEnabled();

  protected:
    void configureInstrumentation(bool log = true);
    void registerInstrumentationCallbacks(std::vector<InstrumentationCallback>* callbacks);
    bool isInstrumentationLib(const dirent* file);

    std::vector<InstrumentationCallback> mInstrumentationCallbacks;
    bool mEnableInstrumentation;
    std::string mInstrumentationLibPackage;
    std::string mInterfaceName;
};

}  // namespace details
}  // namespace hardware
}  // namespace android
