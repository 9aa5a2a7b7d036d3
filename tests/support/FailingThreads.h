// SPDX-License-Identifier: Apache-2.0
// Lets a test run out of threads, and see what ended ones did.
#pragma once

namespace orvo::test {

/**
 * While one exists, no thread of the process can start another: pthread_create, and with it
 * std::thread, fails as it does when the system's limit is reached.
 */
class FailingThreads {
  public:
    FailingThreads();
    ~FailingThreads();
    FailingThreads(const FailingThreads&) = delete;
    FailingThreads& operator=(const FailingThreads&) = delete;
};

/**
 * Orders everything that threads did before they ended, as far as they have, before what the caller
 * does next. A detached thread gives no other sign that does.
 */
void seeWhatEndedThreadsDid();

}  // namespace orvo::test
