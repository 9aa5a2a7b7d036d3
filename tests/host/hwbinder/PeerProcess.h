// SPDX-License-Identifier: Apache-2.0
// PeerProcess: another process for a test to talk to, and the device directory that they share.

#pragma once

#include <sys/types.h>

#include <string>

#include <vendor/orvo/peer/1.0/IPeer.h>

namespace orvo::test {

using vendor::orvo::peer::V1_0::IPeer;

/**
 * The device directory of this test program: fresh, named by ORVO_DEVICE_DIR, and removed when the
 * program ends. There is one for all its tests, because a process joins one device for good.
 */
const std::string& deviceDirectory();

/** A running peer. */
class PeerProcess {
  public:
    /** Starts a peer that is the context object; `threads` of its pool serve calls. */
    explicit PeerProcess(int threads = 4);
    /** Starts a peer that makes itself known to the context object with keepPeer. */
    static PeerProcess joining(int threads = 4);
    ~PeerProcess();
    PeerProcess(PeerProcess&& other) noexcept;
    PeerProcess& operator=(PeerProcess&& other) noexcept;

    pid_t pid() const { return mPid; }
    /** SIGKILL, and waits until the process has ended. */
    void kill();
    bool isRunning() const;

    /** The peer that is the context object. */
    static android::sp<IPeer> context();

  private:
    PeerProcess(const std::string& role, int threads);

    pid_t mPid = -1;
};

}  // namespace orvo::test
