// SPDX-License-Identifier: Apache-2.0
// The fixture of tests in which providers die: it keeps the reconnection threads in hand.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "tests/support/Gate.h"
#include "tests/support/ProviderTest.h"

namespace orvo::test {

/**
 * Reconnection threads wait at mReconnection, in their first pause, until a test or the end of it
 * opens that gate; no pause takes any time from then on. TearDown proves that each of them has
 * ended.
 */
class RecoveryTest : public ProviderTest {
  protected:
    RecoveryTest();
    void TearDown() override;

    /** As makeConnectedObject, and keeps the services for service(). */
    void connect(const std::vector<std::string>& replacements);
    /** The service that was connected under that name at first. */
    ScriptedProvider& service(const std::string& name) { return *mServices[name]; }
    /** The death cookie of that provider. */
    uint64_t cookie(const std::string& name);
    /** Lets the service die as the platform reports it, and gives the lines logged until then. */
    std::vector<LogLine> die(const std::string& name);
    /** Lets waiting reconnection threads go on, and waits until all threads have ended. */
    void finishReconnections();

    static LogLine diedLine(const std::string& name);
    static LogLine withdrawnLine(int notified, int removed, const std::string& type);
    static LogLine reconnectedLine(const std::string& name, int attempt);
    static LogLine gaveUpLine(const std::string& name);

    Gate mReconnection;
    std::map<std::string, android::sp<ScriptedProvider>> mServices;  // Key: instance name.
};

/** Waits until the calling thread is the only one of the process. False when it never is. */
bool waitUntilNoOtherThreadIsLeft();

}  // namespace orvo::test
