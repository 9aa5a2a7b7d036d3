// SPDX-License-Identifier: Apache-2.0
// Real threads, each with a semaphore for its turn.

#include "tests/interleavings/Machine.h"

#include <dlfcn.h>
#include <stdio.h>
#include <stdlib.h>

#include <algorithm>
#include <thread>
#include <utility>

#include "tests/interleavings/World.h"

namespace orvo::interleavings {

struct Machine::Thread {
    Machine* machine;
    int number;
    std::string kind;
    std::string name;
    Cells members;
    std::function<void()> body;  // Of an operation.
    std::function<bool()> isReady;
    void* (*startedBody)(void*) = nullptr;  // Of a thread that the library started.
    void* argument = nullptr;

    Step next;
    bool begun = false;
    bool ended = false;
    bool leftOut = false;
    sem_t turn;
    std::thread real;  // Of an operation.
};

namespace {

using CreateThread = int(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*);

thread_local Machine* tMachine = nullptr;
thread_local int tNumber = -1;

void waitFor(sem_t& semaphore) {
    while (sem_wait(&semaphore) != 0) {
    }
}

}  // namespace
}  // namespace orvo::interleavings

// A sanitizer's own function, when there is one in the program.
extern "C" __attribute__((weak)) orvo::interleavings::CreateThread __interceptor_pthread_create;

namespace orvo::interleavings {
namespace {

CreateThread* realCreateThread() {
    static CreateThread* const real =
            __interceptor_pthread_create != nullptr
                    ? __interceptor_pthread_create
                    : reinterpret_cast<CreateThread*>(dlsym(RTLD_NEXT, "pthread_create"));
    return real;
}

}  // namespace

bool conflict(const Step& left, const Step& right) {
    return ((left.writes & (right.reads | right.writes)) | (right.writes & left.reads)) != 0;
}

Machine::Machine() {
    sem_init(&mOver, 0, 0);
}

Machine::~Machine() {
    for (auto& [number, thread] : mThreads) {
        if (thread->real.joinable()) thread->real.join();
        sem_destroy(&thread->turn);
    }
    sem_destroy(&mOver);
}

Machine* Machine::current() {
    return tMachine;
}

const std::string& Machine::kind(int thread) const {
    return mThreads.at(thread)->kind;
}

const std::string& Machine::name(int thread) const {
    return mThreads.at(thread)->name;
}

int Machine::self() const {
    return tNumber;
}

void Machine::add(const std::string& kind, const std::string& name, Cells members,
                  const Step& first, std::function<void()> body, std::function<bool()> isReady) {
    const int number = static_cast<int>(mThreads.size());
    auto thread = std::make_unique<Thread>();
    thread->machine = this;
    thread->number = number;
    thread->kind = kind;
    thread->name = name;
    thread->members = members;
    thread->body = std::move(body);
    thread->isReady = std::move(isReady);
    thread->next = first;
    thread->next.thread = number;
    sem_init(&thread->turn, 0, 0);
    thread->real = std::thread(runOperation, thread.get());
    mThreads[number] = std::move(thread);
}

void Machine::run(const Choose& choose) {
    mChoose = choose;
    if (yield(-1) >= 0) waitFor(mOver);
}

void Machine::runOperation(Thread* thread) {
    waitFor(thread->turn);
    if (thread->leftOut) return;
    tMachine = thread->machine;
    tNumber = thread->number;
    try {
        thread->body();
    } catch (const ProcessEnded&) {
    }
    thread->machine->end(*thread);
}

void* Machine::runStarted(void* argument) {
    auto* const thread = static_cast<Thread*>(argument);
    waitFor(thread->turn);
    tMachine = thread->machine;
    tNumber = thread->number;
    void* const result = thread->startedBody(thread->argument);
    pthread_attr_t attributes;
    int state = PTHREAD_CREATE_JOINABLE;
    if (pthread_getattr_np(pthread_self(), &attributes) == 0) {
        pthread_attr_getdetachstate(&attributes, &state);
        pthread_attr_destroy(&attributes);
    }
    if (state != PTHREAD_CREATE_DETACHED) {
        tMachine->fail("a thread is left: nobody detached " + thread->name);
        pthread_detach(pthread_self());
    }
    thread->machine->end(*thread);
    return result;
}

int Machine::start(pthread_t* created, const pthread_attr_t* attributes, void* (*body)(void*),
                   void* argument) {
    const int parent = tNumber;
    // Before anybody else goes on it has to be detached, or joined: so there is no after().
    pass("start a thread", "");
    int number = parent;
    do number += kMostOperations;
    while (mThreads.count(number) > 0);
    if (number >= static_cast<int>(Threads().size())) return EAGAIN;
    auto thread = std::make_unique<Thread>();
    thread->machine = this;
    thread->number = number;
    thread->startedBody = body;
    thread->argument = argument;
    describe(parent, thread->kind, thread->name, thread->members);
    thread->next.kind = "begin";
    thread->next.runsLibrary = true;
    thread->next.thread = number;
    sem_init(&thread->turn, 0, 0);
    const int failure = realCreateThread()(created, attributes, runStarted, thread.get());
    if (failure != 0) return failure;
    mThreads[number] = std::move(thread);
    mSteps.back().started = number;
    return 0;
}

std::vector<int> Machine::enabled() const {
    std::vector<int> numbers;
    for (const auto& [number, thread] : mThreads) {
        if (thread->ended) continue;
        const bool isHeld = mHolders.count(thread->next.acquires) > 0;
        if (thread->next.acquires != nullptr && isHeld && !mLocksAreOpen) continue;
        if (!thread->begun && thread->isReady && !thread->isReady()) continue;
        numbers.push_back(number);
    }
    return numbers;
}

// Once it is known, every lock is open, so that the threads can end.
bool Machine::findDeadlock() {
    for (const auto& [number, thread] : mThreads) {
        if (!thread->begun || thread->ended) continue;
        mLocksAreOpen = true;
        fail("a deadlock: " + thread->name + " waits for a mutex");
    }
    return mLocksAreOpen;
}

int Machine::yield(int from) {
    std::vector<int> all = enabled();
    if (all.empty() && findDeadlock()) all = enabled();
    if (all.empty()) {
        for (auto& [number, thread] : mThreads) {
            if (thread->begun) continue;
            thread->leftOut = true;
            sem_post(&thread->turn);
        }
        if (from >= 0) sem_post(&mOver);
        return -1;
    }
    const int chosen = mChoose(all, from, mSteps);
    Thread& thread = *mThreads.at(chosen);
    thread.begun = true;
    Step step = thread.next;
    for (const int number : all) step.enabled.set(number);
    if (step.acquires != nullptr) mHolders[step.acquires] = chosen;
    if (step.releases != nullptr) mHolders.erase(step.releases);
    if (step.runsLibrary) step.reads |= thread.members;
    mSteps.push_back(std::move(step));
    if (chosen != from) sem_post(&thread.turn);  // From here on the other one runs.
    return chosen;
}

void Machine::finishStep() {
    const Cells changed = changes();
    Step& step = mSteps.back();
    step.writes |= changed;
    if ((changed & ~mThreads.at(tNumber)->members) != 0 || (changed != 0 && !step.runsLibrary)) {
        fail(name(tNumber) + " changed a member that it is not known to touch");
    }
}

void Machine::decide(Step next) {
    if (tMachine == nullptr) return;
    Thread& me = *mThreads.at(tNumber);
    finishStep();
    me.next = std::move(next);
    me.next.thread = tNumber;
    if (yield(tNumber) != tNumber) waitFor(me.turn);
}

void Machine::before(Step call) {
    static const char* const kUnderTheLock[] = {"log", "read property", "write property", "unlock"};
    const bool allowed = std::find(std::begin(kUnderTheLock), std::end(kUnderTheLock), call.kind) !=
                         std::end(kUnderTheLock);
    const bool loads = call.kind == "open library" || call.kind == "look up symbol";
    if (!allowed && !loads && tMachine != nullptr && holds()) {
        fail(name(tNumber) + " calls outside under the lock: " + call.kind + " " + call.detail);
    }
    decide(std::move(call));
}

void Machine::after() {
    Step step;
    step.kind = "go on";
    step.runsLibrary = true;
    decide(std::move(step));
}

void Machine::pass(const std::string& kind, const std::string& detail) {
    Step step;
    step.kind = kind;
    step.detail = detail;
    step.runsLibrary = true;
    before(std::move(step));
}

void Machine::touch(Cells reads, Cells writes) {
    if (tMachine == nullptr) return;
    mSteps.back().reads |= reads;
    mSteps.back().writes |= writes;
}

bool Machine::holds() const {
    return std::any_of(mHolders.begin(), mHolders.end(),
                       [](const auto& entry) { return entry.second == tNumber; });
}

void Machine::fail(const std::string& finding) {
    mFindings.push_back(finding);
}

void Machine::end(Thread& thread) {
    if (holds()) fail(thread.name + " ends with a mutex held");
    finishStep();
    thread.ended = true;
    tMachine = nullptr;
    yield(thread.number);
}

std::vector<Step> Machine::pending() const {
    std::vector<Step> steps;
    for (const auto& [number, thread] : mThreads) {
        if (!thread->ended) steps.push_back(thread->next);
    }
    return steps;
}

}  // namespace orvo::interleavings

// The program's own definition comes before the system's, also for calls of the C++ library.
extern "C" int pthread_create(pthread_t* thread, const pthread_attr_t* attributes,
                              void* (*body)(void*), void* argument) {
    using orvo::interleavings::Machine;
    if (Machine* const machine = Machine::current()) {
        return machine->start(thread, attributes, body, argument);
    }
    return orvo::interleavings::realCreateThread()(thread, attributes, body, argument);
}
