// SPDX-License-Identifier: Apache-2.0
// ProgramLog: one lock, under which a line is written as a whole and a full file makes way.

#include "host/log/ProgramLog.h"

#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <cerrno>

#include <android-base/file.h>
#include <android-base/strings.h>
#include <android-base/unique_fd.h>
#include <android/log.h>

#include "host/Mutex.h"

namespace orvo {

namespace {

constexpr char kLogTag[] = "ProgramLog";

/** Local, to the microsecond. */
std::string timeOfNow() {
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    tm local{};
    localtime_r(&now.tv_sec, &local);
    char seconds[32];
    strftime(seconds, sizeof(seconds), "%m-%d %H:%M:%S", &local);
    char all[64];
    snprintf(all, sizeof(all), "%s.%06ld", seconds, now.tv_nsec / 1000);
    return all;
}

std::string textOf(int priority, const std::string& tag, const std::string& message) {
    static constexpr char kPriorities[] = "??VDIWEFS";
    const bool known = priority >= 0 && priority <= ANDROID_LOG_SILENT;
    char ids[32];
    snprintf(ids, sizeof(ids), "%5d %5d", getpid(), gettid());
    return tag + " " + kPriorities[known ? priority : 0] + " " + timeOfNow() + " " + ids + " " +
           message + "\n";
}

/** The file behind a descriptor if it is a log of this device, or "". */
std::string deviceLogBehind(int fd) {
    const char* const device = getenv("ORVO_DEVICE_DIR");
    std::string file;
    if (device == nullptr ||
        !android::base::Readlink("/proc/self/fd/" + std::to_string(fd), &file)) {
        return "";
    }
    return android::base::StartsWith(file, std::string(device) + "/log/") ? file : "";
}

off_t sizeOf(const std::string& file) {
    struct stat status {};
    return stat(file.c_str(), &status) == 0 ? status.st_size : 0;
}

bool areOneFile(int left, int right) {
    struct stat one {
    }, other{};
    return fstat(left, &one) == 0 && fstat(right, &other) == 0 && one.st_dev == other.st_dev &&
           one.st_ino == other.st_ino;
}

/** What a process writes its log to. */
class Output {
  public:
    void begin(int fd, const std::string& file) EXCLUDES(mLock) {
        MutexLock lock(mLock);
        mFd = fd;
        mFile = file;
    }

    void write(int priority, const std::string& tag, const std::string& message) EXCLUDES(mLock) {
        MutexLock lock(mLock);
        if (!mFile.empty()) makeWay();
        if (mLost > 0) {
            const std::string lost = std::to_string(mLost) + " lines could not be written (" +
                                     strerror(mReason) + ")";
            // What there was room for ends in the middle of a line.
            const std::string end = mTorn ? "\n" : "";
            if (writeAll(end + textOf(ANDROID_LOG_WARN, kLogTag, lost))) mLost = 0;
        }
        if (mLost > 0 || !writeAll(textOf(priority, tag, message))) mLost++;
    }

  private:
    bool writeAll(const std::string& text) REQUIRES(mLock) {
        for (size_t at = 0; at < text.size();) {
            const ssize_t count =
                    TEMP_FAILURE_RETRY(::write(mFd, text.data() + at, text.size() - at));
            if (count <= 0) {
                mReason = errno;
                mTorn = mTorn || at > 0;
                return false;
            }
            at += static_cast<size_t>(count);
        }
        mTorn = false;
        return true;
    }

    /**
     * Puts a new file in the place of a full one. Nobody writes to the old one any more once it has
     * another name. Where there is no room for a new one, the old one grows.
     */
    void makeWay() REQUIRES(mLock) {
        struct stat status {};
        if (fstat(mFd, &status) != 0 || static_cast<size_t>(status.st_size) < kMostLogBytes) return;
        const std::string fresh = mFile + ".new";
        const std::string old = mFile + ".1";
        const android::base::unique_fd file(
                open(fresh.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644));
        if (!file.ok()) return;
        const off_t gone = sizeOf(old);
        // What the program prints goes where its log goes.
        const bool withOutput = mFd == STDERR_FILENO && areOneFile(STDOUT_FILENO, mFd);
        if (dup3(file.get(), mFd, mFd == STDERR_FILENO ? 0 : O_CLOEXEC) < 0) return;
        if (withOutput) (void)dup2(file.get(), STDOUT_FILENO);  // else it goes on in the old one
        // If a name cannot be changed, the log goes on where nobody looks for it.
        (void)rename(mFile.c_str(), old.c_str());
        (void)rename(fresh.c_str(), mFile.c_str());
        if (gone == 0) return;
        (void)writeAll(textOf(ANDROID_LOG_WARN, kLogTag,
                              std::to_string(gone) + " bytes of older lines are gone; " + old +
                                      " has the ones before this"));
    }

    Mutex mLock;
    int mFd GUARDED_BY(mLock) = STDERR_FILENO;
    std::string mFile GUARDED_BY(mLock);   ///< the log that makes way when it is full; "" if none
    size_t mLost GUARDED_BY(mLock) = 0;    ///< lines that could not be written
    bool mTorn GUARDED_BY(mLock) = false;  ///< a line was begun and not ended
    int mReason GUARDED_BY(mLock) = 0;     ///< errno of the newest line that was lost
};

/** Never destroyed: threads may log until the process is gone. */
Output& output() {
    static auto* const gOutput = new Output;
    return *gOutput;
}

thread_local std::vector<LoggedLine>* gKept = nullptr;

void takeLine(const __android_logger_data* data, const char* message) {
    const std::string tag = data->tag == nullptr ? "" : data->tag;
    if (gKept != nullptr) {
        gKept->push_back({data->priority, tag, message});
    } else {
        output().write(data->priority, tag, message);
    }
}

}  // namespace

void logToStandardError() {
    output().begin(STDERR_FILENO, deviceLogBehind(STDERR_FILENO));
    __android_log_set_logger(takeLine);
}

void logToFile(const std::string& file) {
    const int fd = open(file.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
    if (fd < 0) return;        // stderr is there
    output().begin(fd, file);  // for the rest of the process
    __android_log_set_logger(takeLine);
}

KeptLog::KeptLog() {
    __android_log_set_logger(takeLine);
    gKept = &mLines;
}

KeptLog::~KeptLog() {
    gKept = nullptr;
}

}  // namespace orvo
