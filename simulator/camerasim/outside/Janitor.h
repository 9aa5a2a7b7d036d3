// SPDX-License-Identifier: Apache-2.0
// Janitor: a process that removes a device's temporary directory when its last process is gone.

#pragma once

#include <sys/types.h>

#include <string>

#include <android-base/result.h>
#include <android-base/unique_fd.h>

namespace orvo::simulator {

/** What mkdtemp makes the directories' names from; by it other programs recognise them. */
constexpr char kDirectoryPattern[] = "camerasim.XXXXXX";

/** Where the directories are made, as the user names it: $TMPDIR, or /tmp. */
std::string directoryOfDirectories();

/**
 * What to do about something that could not be written in the directory: if there was no room, that
 * names the file system, what it has left, and TMPDIR; otherwise what is given.
 */
std::string remedyFor(int error, const std::string& directory, const std::string& otherwise);

/**
 * Makes a fresh directory and removes it once nobody holds the lifeline any more, however its
 * holders ended: also after SIGKILL of the program that started it.
 *
 * The lifeline is a descriptor that every process of the device inherits and nobody writes to.
 * The janitor is a child in a session of its own, out of reach of a terminal's signals.
 */
class Janitor {
  public:
    /**
     * Forks; the caller must have one thread only. The directory is made below $TMPDIR, or /tmp.
     *
     * @param keep leave the directory there in the end.
     */
    static android::base::Result<Janitor> start(bool keep);

    /** The other one has nothing to finish any more. */
    Janitor(Janitor&& other) noexcept;
    /** As finish(). */
    ~Janitor();

    /** Absolute; empty of everything but what the caller puts there. */
    const std::string& directory() const { return mDirectory; }

    /** To be inherited by processes of the device; closed on exec unless made otherwise. */
    int lifeline() const { return mLifeline.get(); }

    /** Lets go of the lifeline, and waits until the directory is gone. */
    void finish();

  private:
    Janitor(pid_t pid, std::string directory, android::base::unique_fd lifeline);

    pid_t mPid;  ///< -1 once finished
    std::string mDirectory;
    android::base::unique_fd mLifeline;
};

}  // namespace orvo::simulator
