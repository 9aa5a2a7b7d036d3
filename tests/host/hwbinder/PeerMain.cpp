// SPDX-License-Identifier: Apache-2.0
// peer_process: serves IPeer for the transport's tests.
//
// usage: peer_process context|joining THREADS
// Writes one byte to standard output when it serves, and runs until it is killed.

#include <fcntl.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include <atomic>
#include <condition_variable>
#include <filesystem>
#include <mutex>
#include <thread>
#include <vector>

#include <hidl/HidlBinderSupport.h>
#include <hidl/HidlTransportSupport.h>
#include <hwbinder/IPCThreadState.h>
#include <hwbinder/ProcessState.h>
#include <vendor/orvo/peer/1.0/BnHwPeer.h>
#include <vendor/orvo/peer/1.0/BpHwPeer.h>
#include <vendor/orvo/peer/1.0/IPeer.h>

namespace {

using namespace vendor::orvo::peer::V1_0;
using android::sp;
using android::hardware::hidl_handle;
using android::hardware::hidl_string;
using android::hardware::hidl_vec;
using android::hardware::IPCThreadState;
using android::hardware::ProcessState;
using android::hardware::Return;
using android::hardware::toBinder;
using android::hardware::Void;

std::string readToEnd(int fd) {
    std::string content;
    char buffer[256];
    for (ssize_t n; (n = read(fd, buffer, sizeof(buffer))) > 0;) content.append(buffer, n);
    return content;
}

class Peer : public IPeer {
  public:
    Return<void> echoString(const hidl_string& text, echoString_cb done) override {
        done(text);
        return Void();
    }
    Return<void> echoTree(const Tree& tree, echoTree_cb done) override {
        done(tree);
        return Void();
    }
    Return<void> echoBytes(const hidl_vec<uint8_t>& bytes, echoBytes_cb done) override {
        done(bytes);
        return Void();
    }
    Return<Colour> echoColour(Colour colour) override { return colour; }
    Return<sp<IPeer>> echoPeer(const sp<IPeer>& peer) override { return peer; }
    Return<sp<ICallback>> echoCallback(const sp<ICallback>& callback) override { return callback; }

    Return<void> readAll(const hidl_handle& files, readAll_cb done) override {
        std::vector<hidl_string> contents;
        const native_handle_t* handle = files.getNativeHandle();
        for (int i = 0; handle != nullptr && i < handle->numFds; i++) {
            contents.push_back(readToEnd(handle->data[i]));
        }
        done(contents);
        return Void();
    }

    Return<void> openPipes(const hidl_vec<hidl_string>& contents, openPipes_cb done) override {
        native_handle_t* handle = native_handle_create(contents.size(), 0);
        for (size_t i = 0; i < contents.size(); i++) {
            int ends[2];
            if (pipe2(ends, O_CLOEXEC) != 0) abort();
            if (write(ends[1], contents[i].c_str(), contents[i].size()) < 0) abort();
            close(ends[1]);
            handle->data[i] = ends[0];
        }
        hidl_handle files;
        files.setTo(handle, true);
        done(files);
        return Void();
    }

    Return<void> describe(const Parcelled& parcelled, describe_cb done) override {
        const native_handle_t* handle = parcelled.content.getNativeHandle();
        done(parcelled.label, handle == nullptr ? "no handle" : readToEnd(handle->data[0]));
        return Void();
    }

    // Of the base interface: writes the options back, or nothing for want of a handle.
    Return<void> debug(const hidl_handle& fd, const hidl_vec<hidl_string>& options) override {
        std::string text;
        for (const std::string option : options) text += option + "\n";
        if (fd != nullptr && write(fd->data[0], text.data(), text.size()) < 0) abort();
        return Void();
    }

    Return<int32_t> countDescriptors() override {
        const std::filesystem::directory_iterator all("/proc/self/fd");
        return static_cast<int32_t>(std::distance(begin(all), end(all)));
    }

    Return<int32_t> callBack(const sp<ICallback>& callback, int32_t count) override {
        int32_t sum = 0;
        for (int32_t i = 0; i < count; i++) sum += callback->onCall(i).withDefault(-1000000);
        return sum;
    }

    Return<int32_t> callBackFromThreads(const sp<ICallback>& callback, int32_t threads,
                                        int32_t count) override {
        std::atomic<int32_t> sum{0};
        std::vector<std::thread> callers;
        for (int32_t t = 0; t < threads; t++) {
            callers.emplace_back(
                    [this, &sum, callback, count] { sum += callBack(callback, count); });
        }
        for (std::thread& caller : callers) caller.join();
        return sum.load();
    }

    Return<void> callBackLater(const sp<ICallback>& callback, int32_t value) override {
        std::thread([callback, value] { (void)callback->onCall(value).isOk(); }).detach();
        return Void();
    }

    Return<int32_t> descend(const sp<IPeer>& other, int32_t levels) override {
        if (levels == 0) return 1;
        return 1 + other->descend(this, levels - 1).withDefault(-1000000);
    }

    Return<void> keepPeer(const sp<IPeer>& peer) override {
        std::lock_guard<std::mutex> lock(mMutex);
        mKeptPeer = peer;
        return Void();
    }
    Return<sp<IPeer>> keptPeer() override {
        std::lock_guard<std::mutex> lock(mMutex);
        return mKeptPeer;
    }
    Return<void> keepCallback(const sp<ICallback>& callback) override {
        std::lock_guard<std::mutex> lock(mMutex);
        mKeptCallback = callback;
        return Void();
    }
    Return<void> passCallback(const sp<IPeer>& to) override {
        sp<ICallback> callback;
        {
            std::lock_guard<std::mutex> lock(mMutex);
            callback = mKeptCallback;
        }
        if (!to->keepCallback(callback).isOk()) abort();
        return Void();
    }
    Return<void> tryKeptCallback(int32_t value, tryKeptCallback_cb done) override {
        sp<ICallback> callback;
        {
            std::lock_guard<std::mutex> lock(mMutex);
            callback = mKeptCallback;
        }
        Return<int32_t> answer = callback->onCall(value);
        done(answer.isOk() ? "answer " + std::to_string(static_cast<int32_t>(answer))
                           : answer.description());
        return Void();
    }

    Return<int32_t> processId() override { return getpid(); }
    Return<int32_t> callerId() override { return IPCThreadState::self()->getCallingPid(); }
    Return<void> exitNow() override { _exit(0); }

    Return<void> block() override {
        std::unique_lock<std::mutex> lock(mMutex);
        mReleased = false;
        mChanged.wait(lock, [this] { return mReleased; });
        return Void();
    }
    Return<void> release() override {
        std::lock_guard<std::mutex> lock(mMutex);
        mReleased = true;
        mChanged.notify_all();
        return Void();
    }

    Return<void> note(int32_t number) override {
        std::lock_guard<std::mutex> lock(mMutex);
        mNotes.push_back(number);
        return Void();
    }
    Return<void> noteWithFile(int32_t number, const hidl_handle& file) override {
        const bool arrived = file.getNativeHandle() != nullptr && file->numFds == 1;
        return note(arrived ? number : -1);
    }
    Return<void> notes(notes_cb done) override {
        std::lock_guard<std::mutex> lock(mMutex);
        done(mNotes);
        return Void();
    }

  private:
    std::mutex mMutex;
    std::condition_variable mChanged;
    bool mReleased = false;
    std::vector<int32_t> mNotes;
    sp<IPeer> mKeptPeer;
    sp<ICallback> mKeptCallback;
};

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) return 2;
    android::hardware::configureRpcThreadpool(atoi(argv[2]), true);
    // A process that hands out no object by itself has to start its pool itself.
    ProcessState::self()->startThreadPool();
    sp<IPeer> peer = new Peer;
    if (strcmp(argv[1], "context") == 0) {
        sp<android::hardware::IBinder> binder = toBinder<IPeer>(peer);
        if (!ProcessState::self()->becomeContextManager(nullptr, nullptr)) return 1;
        IPCThreadState::self()->setTheContextObject(binder->localBinder());
    } else {
        auto binder = ProcessState::self()->getContextObject(nullptr);
        auto context = android::hardware::fromBinder<IPeer, BpHwPeer, BnHwPeer>(binder);
        if (!context->keepPeer(peer).isOk()) return 1;
    }
    if (write(STDOUT_FILENO, "r", 1) != 1) return 1;
    android::hardware::joinRpcThreadpool();
}
