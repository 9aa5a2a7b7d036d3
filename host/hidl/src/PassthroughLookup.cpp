// SPDX-License-Identifier: Apache-2.0
// Finds, loads and asks the libraries that implement interfaces.

#define LOG_TAG "PassthroughLookup"

#include "PassthroughLookup.h"

#include <dirent.h>
#include <dlfcn.h>
#include <stdlib.h>

#include <memory>
#include <optional>
#include <string_view>

#include <hidl/HidlInternal.h>
#include <log/log.h>

namespace android {
namespace hardware {
namespace details {

using ::android::hidl::base::V1_0::IBase;

namespace {

constexpr std::string_view kImplementation = "-impl";
constexpr std::string_view kLibrarySuffix = ".so";

/** "a.b@1.0" and "IFoo". */
struct DescriptorParts {
    std::string package;
    std::string interface;
};

std::optional<DescriptorParts> takeApart(const std::string& descriptor) {
    const size_t colons = descriptor.find("::");
    // A slash would lead the search out of the directories.
    if (colons == std::string::npos || descriptor.find('/') != std::string::npos) {
        ALOGE("'%s' is no interface descriptor such as a.b@1.0::IFoo", descriptor.c_str());
        return std::nullopt;
    }
    return DescriptorParts{descriptor.substr(0, colons), descriptor.substr(colons + 2)};
}

std::vector<std::string> searchedDirectories() {
    std::vector<std::string> directories;
    const char* first = getenv("ORVO_PASSTHROUGH_DIR");
    if (first != nullptr && *first != '\0') directories.push_back(std::string(first) + "/");
    for (const char* directory :
         {HAL_LIBRARY_PATH_ODM, HAL_LIBRARY_PATH_VENDOR, HAL_LIBRARY_PATH_SYSTEM}) {
        directories.push_back(directory);
    }
    return directories;
}

/** The names of the libraries in a directory, as the directory gives them; none if there is none.
 */
std::vector<std::string> librariesIn(const std::string& directory) {
    const std::unique_ptr<DIR, int (*)(DIR*)> stream(opendir(directory.c_str()), closedir);
    if (stream == nullptr) return {};
    std::vector<std::string> names;
    while (const dirent* entry = readdir(stream.get())) {
        const std::string_view name = entry->d_name;
        if (name.size() < kLibrarySuffix.size()) continue;
        if (name.substr(name.size() - kLibrarySuffix.size()) != kLibrarySuffix) continue;
        names.emplace_back(name);
    }
    return names;
}

/** The paths of the libraries that may implement interfaces of a package, in order of search. */
std::vector<std::string> librariesOf(const std::string& package) {
    const std::string prefix = package + std::string(kImplementation);
    std::vector<std::string> paths;
    for (const std::string& directory : searchedDirectories()) {
        for (const std::string& name : librariesIn(directory)) {
            if (name.compare(0, prefix.size(), prefix) == 0) paths.push_back(directory + name);
        }
    }
    return paths;
}

using Library = std::unique_ptr<void, int (*)(void*)>;

Library open(const std::string& path) {
    Library library(dlopen(path.c_str(), RTLD_LAZY), dlclose);
    if (library == nullptr) ALOGE("Cannot load %s: %s", path.c_str(), dlerror());
    return library;
}

}  // namespace

sp<IBase> loadPassthroughImplementation(const std::string& descriptor,
                                        const std::string& instance) {
    const auto parts = takeApart(descriptor);
    if (!parts) return nullptr;
    const std::string symbol = "HIDL_FETCH_" + parts->interface;
    for (const std::string& path : librariesOf(parts->package)) {
        Library library = open(path);
        if (library == nullptr) continue;
        // Every interface has the same address as its IBase.
        using Fetch = IBase* (*)(const char* instance);
        const auto fetch = reinterpret_cast<Fetch>(dlsym(library.get(), symbol.c_str()));
        if (fetch == nullptr) {
            ALOGE("%s does not export %s", path.c_str(), symbol.c_str());
            continue;
        }
        const sp<IBase> implementation = fetch(instance.c_str());
        if (implementation == nullptr) continue;
        static_cast<void>(library.release());  // never closed: the object's code is in it
        return implementation;
    }
    return nullptr;
}

void loadPassthroughLibraries(const std::string& descriptor) {
    const auto parts = takeApart(descriptor);
    if (!parts) return;
    for (const std::string& path : librariesOf(parts->package)) {
        static_cast<void>(open(path).release());
    }
}

std::vector<std::string> passthroughPackages() {
    std::vector<std::string> packages;
    for (const std::string& directory : searchedDirectories()) {
        for (const std::string& name : librariesIn(directory)) {
            const size_t end = name.find(kImplementation);
            const size_t at = name.find('@');
            if (end != std::string::npos && at < end) packages.push_back(name.substr(0, end));
        }
    }
    return packages;
}

}  // namespace details
}  // namespace hardware
}  // namespace android
