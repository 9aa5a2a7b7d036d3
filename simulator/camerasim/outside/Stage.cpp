// SPDX-License-Identifier: Apache-2.0
// Stage: copies, so that nothing that a running device does reaches the device directory.

#include "simulator/camerasim/outside/Stage.h"

#include <sys/un.h>

#include <filesystem>
#include <system_error>

#include "simulator/camerasim/outside/Janitor.h"

namespace orvo::simulator {

namespace fs = std::filesystem;
using android::base::Error;
using android::base::Result;

namespace {

/** "/hwbinder/" and the longest name that a process gives its socket there. */
constexpr size_t kLongestSocketName = 10 + 32;

void copyFile(const fs::path& from, const fs::path& to, std::error_code* failure) {
    fs::copy_file(from, to, fs::copy_options::overwrite_existing, *failure);
    // Which is what the C++ library makes of a file that became shorter than it should.
    if (*failure != std::errc::io_error) return;
    std::error_code unknown;
    const fs::space_info space = fs::space(to.parent_path(), unknown);
    if (!unknown && space.available == 0) {
        *failure = std::make_error_code(std::errc::no_space_on_device);
    }
}

/** Directories are made afresh and files stay writable, so that all of it can be removed again. */
void copyTree(const fs::path& from, const fs::path& to, std::error_code* failure) {
    fs::create_directories(to, *failure);
    for (fs::directory_iterator it(from, *failure), end; !*failure && it != end;
         it.increment(*failure)) {
        const fs::path target = to / it->path().filename();
        if (it->is_symlink()) {
            fs::copy_symlink(it->path(), target, *failure);
        } else if (it->is_directory()) {
            copyTree(it->path(), target, failure);
        } else {
            copyFile(it->path(), target, failure);
        }
    }
}

Result<void> placeLibrary(const std::string& library, const fs::path& place) {
    std::error_code failure;
    fs::create_directories(place.parent_path(), failure);
    if (!failure) copyFile(library, place, &failure);
    if (failure) {
        return Error() << "cannot copy '" << library << "' to '" << place.string() << "' ("
                       << failure.message() << "); "
                       << remedyFor(failure.value(), place.parent_path(), "make it readable");
    }
    return {};
}

}  // namespace

Result<void> Stage::fill(const HeadsetDescription& device, const Installation& installation) const {
    if (run().size() + kLongestSocketName >= sizeof(sockaddr_un::sun_path)) {
        return Error() << "the temporary directory '" << mRoot
                       << "' is too long a name for sockets; set TMPDIR to a shorter one";
    }
    std::error_code failure;
    fs::create_directories(logs(), failure);
    if (!failure) copyTree(device.vendorTree(), vendor(), &failure);
    if (failure) {
        return Error() << "cannot copy '" << device.vendorTree() << "' to '" << vendor() << "' ("
                       << failure.message() << "); "
                       << remedyFor(failure.value(), mRoot, "make it readable");
    }
    const fs::path lib = vendor() + "/lib64";
    auto placed = placeLibrary(installation.providerLibrary,
                               lib / "hw" / "android.hardware.camera.provider@2.4-impl-orvo.so");
    if (!placed) return placed;
    return placeLibrary(installation.mrProviderLibrary,
                        lib / "vendor.quill.mrprovider.provider@2.4-impl.so");
}

}  // namespace orvo::simulator
