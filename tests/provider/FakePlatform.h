// SPDX-License-Identifier: Apache-2.0
// The platform below the entry point: service manager, dynamic loader and the vendor's map file.
#pragma once

#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include <android/hardware/camera/provider/2.4/ICameraProvider.h>
#include <android/hidl/manager/1.2/IServiceManager.h>

#include "tests/support/CountedInstance.h"

namespace orvo::test {

/**
 * Stands behind the platform's functions for the whole process while it exists; at most one does at
 * a time. The dynamic loader and the file system are replaced for the program's own objects, and
 * for the paths below only. Any thread.
 */
class FakePlatform {
  public:
    using IBase = android::hidl::base::V1_0::IBase;
    using ICameraProvider = android::hardware::camera::provider::V2_4::ICameraProvider;
    using Notification = android::hidl::manager::V1_0::IServiceNotification;

    static constexpr char kMapFile[] = "/vendor/etc/orvo_vendor_manifest.xml";
    static constexpr char kMRLibrary[] =
            "/vendor/lib64/vendor.quill.mrprovider.provider@2.4-impl.so";

    FakePlatform();
    ~FakePlatform();
    FakePlatform(const FakePlatform&) = delete;
    FakePlatform& operator=(const FakePlatform&) = delete;

    /** The platform whose functions are being called; ends the process when there is none. */
    static FakePlatform& current();

    /** True once any platform of this process has opened the MR library. */
    static bool libraryWasOpened();

    // The service manager.
    bool hasServiceManager = true;
    bool queriesFail = false;  ///< Manifest queries, in transport.
    bool acceptsNotifications = true;
    std::vector<std::string> declared;                   ///< Instances in the manifest.
    std::map<std::string, android::sp<IBase>> services;  ///< Key: instance name.

    struct Lookup {
        std::string descriptor;
        std::string instance;
        bool retry;
        bool getStub;
    };
    struct Registration {
        std::string descriptor;
        std::string instance;
        android::sp<Notification> notification;
    };
    std::vector<Lookup> lookups;
    std::vector<std::string> queries;  ///< Interfaces whose manifest entries were asked for.
    std::vector<Registration> registrations;

    // The vendor's map file; it cannot be opened while this is empty.
    std::string mapText;

    // The MR library. Counts of what the loader was asked; the mode and symbol of the last time.
    bool libraryOpens = true;
    bool libraryHasEntry = true;
    std::function<ICameraProvider*(const char*)> mrEntry;  ///< What the entry does.
    std::function<void()> onOpen;                          ///< Runs at the start of each open.
    std::function<void()> onLookUp;  ///< Runs at the start of each look-up of a symbol.
    int opens = 0;
    int openMode = 0;
    int symbolLookups = 0;
    std::string symbol;
    std::vector<std::string> mrNames;  ///< The names that the entry was called with.

    std::mutex mutex;  ///< Guards the records above.
};

}  // namespace orvo::test
