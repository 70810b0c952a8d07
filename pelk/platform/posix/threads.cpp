#include "pelk/platform/threads.h"

#include <pthread.h>
#include <sched.h>
#include <signal.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <climits>
#include <cstdio>
#include <mutex>
#include <new>
#include <thread>
#include <utility>

namespace Tarnkit::platform {

static_assert(sizeof(pthread_t) <= sizeof(std::uintptr_t));

namespace {

/// What Thread::kill and the signal handler that ends the thread tell each other.
struct KillState {
    std::atomic<unsigned> exitCode{0};
    std::atomic<bool> done{false};
};

/// The calling thread's own, for the signal handler to find; null outside the thread's entry.
constinit thread_local KillState* ownKillState = nullptr;

constinit std::atomic<ThreadFilter> threadFilter{nullptr};

constexpr int kKillMilliseconds = 2000;  // a loaded machine may take its time

/// Not the first of the real-time signals: those are what programs take for themselves.
int killSignal() {
    return SIGRTMAX - 3;
}

void endCallingThread(int) {
    KillState* state = ownKillState;
    if (!state)
        return;  // a thread that wasn't started here, or is ending anyway
    const unsigned exitCode = state->exitCode;
    state->done = true;
    // The bare call: the runtime's own way out would unwind the stack and run destructors.
    syscall(SYS_exit, exitCode);
}

void installKillHandler() {
    struct sigaction action = {};
    action.sa_handler = endCallingThread;
    sigfillset(&action.sa_mask);
    sigaction(killSignal(), &action, nullptr);
}

std::size_t usableStackSize(int size) {
    const std::size_t page = sysconf(_SC_PAGESIZE);
    const std::size_t least = std::max<std::size_t>(size, PTHREAD_STACK_MIN);
    return (least + page - 1) / page * page;
}

bool createThread(pthread_t* thread, void* (*entry)(void*), void* argument, int stackSize) {
    if (const ThreadFilter filter = threadFilter.load(); filter && !filter())
        return false;
    pthread_attr_t attributes;
    if (pthread_attr_init(&attributes) != 0)
        return false;
    if (stackSize > 0)
        pthread_attr_setstacksize(&attributes, usableStackSize(stackSize));
    const int error = pthread_create(thread, &attributes, entry, argument);
    pthread_attr_destroy(&attributes);
    return error == 0;
}

}  // namespace

/// What a thread and its handle share; the last of them frees it.
struct Thread::Body {
    Entry entry;
    void* argument;
    KillState kill;
    std::atomic<bool> hasEnded{false};
    // The thread's reference to this. It stands here and not on the thread's stack, which is lost
    // when the thread is killed: Thread::kill must be able to drop it.
    std::shared_ptr<Body> self;
};

void* Thread::run(void* argument) {
    auto* own = static_cast<Body*>(argument);
    ownKillState = &own->kill;
    own->entry(own->argument);
    ownKillState = nullptr;
    const std::shared_ptr<Body> share = std::move(own->self);
    share->hasEnded = true;
    return nullptr;
}

bool Thread::start(Entry entry, void* argument, int stackSize) try {
    auto made = std::make_shared<Body>();
    made->entry = entry;
    made->argument = argument;
    made->self = made;
    pthread_t thread;
    if (!createThread(&thread, run, made.get(), stackSize)) {
        made->self.reset();
        return false;
    }
    native = static_cast<std::uintptr_t>(thread);
    currentPriority.reset();  // it begins with that of the thread that made it
    body = std::move(made);
    return true;
} catch (const std::bad_alloc&) {
    return false;
}

Thread::~Thread() {
    if (body)
        pthread_detach(static_cast<pthread_t>(native));
}

void Thread::setPriority(ThreadPriority priority) {
    if (!body || currentPriority == priority)
        return;
    const sched_param noLevels = {};
    const int policy = priority == ThreadPriority::belowNormal ? SCHED_BATCH : SCHED_OTHER;
    pthread_setschedparam(static_cast<pthread_t>(native), policy, &noLevels);
    currentPriority = priority;
}

bool Thread::setAffinity(const ProcessorSet& processors) {
    static_assert(sizeof(ProcessorSet) == sizeof(cpu_set_t), "the system's set has our layout");
    return body && pthread_setaffinity_np(static_cast<pthread_t>(native), sizeof processors,
                                          reinterpret_cast<const cpu_set_t*>(&processors)) == 0;
}

void Thread::join() {
    if (std::exchange(body, nullptr))
        pthread_join(static_cast<pthread_t>(native), nullptr);
}

bool Thread::kill(unsigned exitCode) {
    const std::shared_ptr<Body> victim = std::exchange(body, nullptr);
    if (!victim)
        return false;
    static std::once_flag installed;
    std::call_once(installed, installKillHandler);
    victim->kill.exitCode = exitCode;
    const auto thread = static_cast<pthread_t>(native);
    pthread_kill(thread, killSignal());
    for (int i = 0; i < kKillMilliseconds && !victim->kill.done && !victim->hasEnded; ++i)
        sleepFor(1);
    pthread_detach(thread);
    if (victim->kill.done)
        victim->self.reset();
    return victim->kill.done || victim->hasEnded;
}

void Thread::setName(const char* name) {
    char bounded[16];
    std::snprintf(bounded, sizeof bounded, "%s", name);
    pthread_setname_np(pthread_self(), bounded);
}

void sleepFor(int milliseconds) {
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

void setThreadFilter(ThreadFilter filter) {
    threadFilter = filter;
}

}  // namespace Tarnkit::platform
