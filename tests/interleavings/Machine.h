// SPDX-License-Identifier: Apache-2.0
// Runs threads one at a time and decides at each of their calls which of them goes on.
#pragma once

#include <pthread.h>
#include <semaphore.h>
#include <stdint.h>

#include <bitset>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace orvo::interleavings {

/** What a step may touch, one bit for each thing; two things may share a bit. */
using Cells = uint64_t;

constexpr int kMostOperations = 40;
constexpr int kMostStarted = 8;
/** Thread numbers: those of the operations, then those of the threads that each of them starts. */
using Threads = std::bitset<(1 + kMostStarted) * kMostOperations>;

/**
 * What a thread does between two decisions: either one call, as seen from outside, or the code of
 * the library up to its next call.
 */
struct Step {
    std::string kind;    ///< "log", "tell"; "go on" is the library after a call.
    std::string detail;  ///< Of the call.
    Cells reads = 0;
    Cells writes = 0;
    const void* acquires = nullptr;  ///< A mutex.
    const void* releases = nullptr;
    bool runsLibrary = false;  ///< May touch the members that its operation may touch.

    int thread = -1;       ///< This and the rest are filled in by the machine.
    int started = -1;      ///< The thread that it started.
    Threads enabled = {};  ///< Who else could have gone on.
};

/** False when the steps can change places, next to each other, without a trace. */
bool conflict(const Step& left, const Step& right);

/** One run. At most one exists at a time. */
class Machine {
  public:
    /** One of `enabled`; `running` is the last one, or -1 at first; `steps` are those so far. */
    using Choose = std::function<int(const std::vector<int>& enabled, int running,
                                     const std::vector<Step>& steps)>;

    Machine();
    ~Machine();
    Machine(const Machine&) = delete;
    Machine& operator=(const Machine&) = delete;

    /** Null, too, on a thread that no machine runs. */
    static Machine* current();

    /**
     * A thread of the scenario, whose body begins with that step. `members`: what the library may
     * touch in it between its calls. `isReady`, if any, says whether it can begin; one that never
     * can is left out.
     */
    void add(const std::string& kind, const std::string& name, Cells members, const Step& first,
             std::function<void()> body, std::function<bool()> isReady);
    /** Until all threads have ended. */
    void run(const Choose& choose);

    // On a running thread; nothing happens on any other one.
    /** A call, before it has any effect. Others may go first. */
    void before(Step call);
    /** The end of a call, before the library goes on. Others may go first. */
    void after();
    /** A call without an effect that anybody else can see. */
    void pass(const std::string& kind, const std::string& detail);
    /** A thread that the library starts. */
    int start(pthread_t* thread, const pthread_attr_t* attributes, void* (*body)(void*),
              void* argument);
    /** Adds to what the step touches that runs now. */
    void touch(Cells reads, Cells writes);
    /** The thread's own number. */
    int self() const;
    /** True when the thread holds a mutex. */
    bool holds() const;
    void fail(const std::string& finding);

    /** Which members have changed since it was last asked. */
    std::function<Cells()> changes;
    /** What the threads that are started count as: the same as add() is told. */
    std::function<void(int parent, std::string& kind, std::string& name, Cells& members)> describe;

    const std::vector<Step>& steps() const { return mSteps; }
    /** The next steps of threads that could not take them. */
    std::vector<Step> pending() const;
    const std::vector<std::string>& findings() const { return mFindings; }
    /** Of a thread. */
    const std::string& kind(int thread) const;
    const std::string& name(int thread) const;

  private:
    struct Thread;

    static void* runStarted(void* thread);
    static void runOperation(Thread* thread);
    std::vector<int> enabled() const;
    void decide(Step next);
    /** Lets somebody go on and says who it is; -1 when there is nobody. */
    int yield(int from);
    bool findDeadlock();
    void finishStep();
    void end(Thread& thread);

    std::map<int, std::unique_ptr<Thread>> mThreads;  // Key: number.
    std::map<const void*, int> mHolders;              // Key: mutex. Value: who holds it.
    Choose mChoose;
    std::vector<Step> mSteps;
    std::vector<std::string> mFindings;
    sem_t mOver;
    bool mLocksAreOpen = false;  // Nobody waits for a mutex any more.
};

}  // namespace orvo::interleavings
