// SPDX-License-Identifier: Apache-2.0
// hwservicemanager: the program through which the processes of one device find each other.

#include <getopt.h>
#include <pthread.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>

#include <string>
#include <utility>
#include <vector>

#include <cutils/properties.h>
#include <hidl/HidlBinderSupport.h>
#include <hidl/HidlTransportSupport.h>
#include <hwbinder/IPCThreadState.h>
#include <hwbinder/ProcessState.h>

#include "HwServiceManager.h"
#include "host/TransportEnd.h"
#include "host/log/ProgramLog.h"
#include "host/vintf/VintfManifest.h"

using android::sp;
using android::hardware::IPCThreadState;
using android::hardware::ProcessState;
using orvo::HwServiceManager;
using orvo::ManifestMistake;
using orvo::ManifestMistakes;
using orvo::VintfManifest;

namespace {

constexpr char kHelp[] =
        "The service manager of one device, whose directory ORVO_DEVICE_DIR names.\n"
        "Prints \"ready\" once it serves; runs until SIGTERM or SIGINT.\n"
        "Usage: hwservicemanager [OPTIONS]\n\n"
        "  -h,--help        print this help and exit\n"
        "  --manifest FILE  VINTF manifest file; may be given several times. Without it:\n"
        "                   /vendor/etc/vintf/manifest.xml and /vendor/etc/vintf/manifest/*.xml";
constexpr char kVintfDirectory[] = "/vendor/etc/vintf";
// Enough for several processes that register at once; nothing here takes long.
constexpr size_t kPoolThreads = 4;

int fail(const std::string& error) {
    fprintf(stderr, "hwservicemanager: %s\n", error.c_str());
    return EXIT_FAILURE;
}

/** The files of the command line; ends the program where there is no more to do. */
std::vector<std::string> manifestsOrLeave(int argc, char** argv) {
    static const option kOptions[] = {
            {"manifest", required_argument, nullptr, 'm'}, {"help", no_argument, nullptr, 'h'}, {}};
    std::vector<std::string> files;
    for (int found; (found = getopt_long(argc, argv, "h", kOptions, nullptr)) != -1;) {
        if (found == 'h') {
            puts(kHelp);
            exit(EXIT_SUCCESS);
        }
        if (found != 'm') exit(EXIT_FAILURE);  // getopt_long has said why
        files.emplace_back(optarg);
    }
    if (optind < argc) {
        exit(fail(std::string("'") + argv[optind] +
                  "' is no option; name a file by --manifest, see --help"));
    }
    return files;
}

/** False, after a line for each mistake, if there are any. */
bool readManifest(const std::vector<std::string>& files, VintfManifest* manifest) {
    ManifestMistakes all;
    if (files.empty()) all = manifest->addDirectory(kVintfDirectory);
    for (const std::string& file : files) {
        const ManifestMistakes mistakes = manifest->addFile(file);
        all.insert(all.end(), mistakes.begin(), mistakes.end());
    }
    for (const ManifestMistake& mistake : all) fail(mistake.toText());
    return all.empty();
}

/** The signals that end this program. Blocked in every thread, and waited for by one. */
sigset_t endingSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGTERM);
    sigaddset(&signals, SIGINT);
    return signals;
}

/** Becomes everybody's context object and serves calls. */
bool serve(VintfManifest manifest) {
    const sp<HwServiceManager> manager = new HwServiceManager(std::move(manifest));
    const auto binder = android::hardware::getOrCreateCachedBinder(manager.get());
    IPCThreadState::self()->setTheContextObject(binder->localBinder());
    android::hardware::configureRpcThreadpool(kPoolThreads, false /* callerWillJoin */);
    if (!ProcessState::self()->becomeContextManager(nullptr, nullptr)) return false;
    ProcessState::self()->startThreadPool();
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    orvo::logToStandardError();
    const std::vector<std::string> files = manifestsOrLeave(argc, argv);

    VintfManifest manifest;
    if (!readManifest(files, &manifest)) return EXIT_FAILURE;

    // Before there is a second thread: threads inherit what their maker has blocked.
    const sigset_t signals = endingSignals();
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    if (!serve(std::move(manifest))) {
        return fail(
                "cannot serve; set ORVO_DEVICE_DIR to the directory of a device that has no "
                "service manager yet");
    }
    if (property_set("hwservicemanager.ready", "true") != 0) {
        return fail("cannot set the property hwservicemanager.ready");
    }
    puts("ready");
    fflush(stdout);

    int received = 0;
    sigwait(&signals, &received);
    property_set("hwservicemanager.ready", "false");
    orvo::endTransport();
    return EXIT_SUCCESS;
}
