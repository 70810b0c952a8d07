#include "pelk/host/render/render_workers.h"

#include <cstdarg>
#include <cstdio>
#include <exception>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "pelk/base/exception_msg.h"
#include "pelk/contract/renderer.h"
#include "pelk/host/render/number_ranges.h"
#include "pelk/host/render/plugin_faults.h"
#include "pelk/support/silent_log.h"

namespace Tarnkit {

namespace {

/// Why a run ends early.
enum Abort { kStopped = 1, kFailed };

/// Keeps the first exception of several threads.
class FirstFailure {
public:
    /// To be called where the exception is caught.
    void keep() {
        const std::lock_guard hold(mutex);
        if (!failure)
            failure = std::current_exception();
    }

    /// Only while no other thread is at it.
    void rethrow() const {
        if (failure)
            std::rethrow_exception(failure);
    }

    bool isSet() {
        const std::lock_guard hold(mutex);
        return failure != nullptr;
    }

private:
    std::mutex mutex;
    std::exception_ptr failure;
};

class WorkerJob final : public ThreadJob {
public:
    WorkerJob(const std::function<void(Worker&)>& threadWork, FirstFailure& threadFailure)
        : work(threadWork), failure(threadFailure) {}

    void run(int* abortFlag, int*, int threadIndex, int) override {
        begun.fetch_add(1, std::memory_order_relaxed);
        const PluginFaultGuard faults;
        try {
            Worker worker(threadIndex, *abortFlag);
            work(worker);
        } catch (...) {
            failure.keep();
            writeShared(*abortFlag, kFailed);
        }
    }

    const char* getThreadName() override { return "render worker"; }

    std::atomic<int> begun{0};

private:
    const std::function<void(Worker&)>& work;
    FirstFailure& failure;
};

class WorkerProgress final : public ThreadProgress {
public:
    WorkerProgress(const WorkerGroup& watched, MessageLog& messages, FirstFailure& anyFailure)
        : group(watched), log(messages), failure(anyFailure) {}

    void setProgress(int) override {
        try {
            group.report();
        } catch (...) {
            failure.keep();  // thrown on once the threads have ended, which checkAbort now asks for
        }
    }

    int checkAbort() override {
        if (failure.isSet())
            return kFailed;
        return group.stop.load(std::memory_order_relaxed) ? kStopped : 0;
    }

    void status(int, int, const char* format, ...) override __attribute__((format(printf, 4, 5))) {
        char text[256];
        va_list arguments;
        va_start(arguments, format);
        std::vsnprintf(text, sizeof text, format, arguments);
        va_end(arguments);
        log.debug("%s", text);
    }

    int needsEventPump() override { return 0; }
    void pumpEvents() override {}
    void beginThreads() override {}
    void endThreads() override {}

private:
    const WorkerGroup& group;
    MessageLog& log;
    FirstFailure& failure;
};

std::vector<int> processorsOf(const ThreadPlacement& thread) {
    std::vector<int> processors;
    for (int bit = 0; bit < 64; ++bit)
        if (thread.mask >> bit & 1)
            processors.push_back(thread.group * 64 + bit);
    return processors;
}

/// A line for each NUMA node: which threads are bound to it, and its processors. None if threads
/// are not bound.
std::vector<std::string> describePlacement(const std::vector<ThreadPlacement>& placement) {
    struct Node {
        std::vector<int> threads, processors;
    };
    std::map<int, Node> nodes;
    for (const ThreadPlacement& thread : placement) {
        Node& node = nodes[thread.node];
        node.threads.push_back(thread.threadIndex);
        node.processors = processorsOf(thread);
    }
    std::vector<std::string> lines;
    for (const auto& [index, node] : nodes)
        lines.push_back("threads " + numberRanges(node.threads, ", ") + " on node " +
                        std::to_string(index) + ", processors " +
                        numberRanges(node.processors, ", "));
    return lines;
}

void logPlacement(ThreadManager& manager, int threads, MessageLog& log) {
    const std::vector<std::string> lines = describePlacement(getThreadPlacement(&manager, threads));
    if (lines.empty())
        log.info("%d threads, which the system places", threads);
    for (const std::string& line : lines)
        log.info("%s", line.c_str());
}

}  // namespace

void runWorkers(const WorkerGroup& group, const std::function<void(Worker&)>& work) {
    SilentLog silentLog;
    MessageLog& log = group.log ? *group.log : silentLog;
    FirstFailure failure;
    WorkerJob job(work, failure);
    WorkerProgress progress(group, log, failure);
    if (group.stop)
        return;
    logPlacement(group.manager, group.threads, log);
    const int abort =
        group.manager.runThreads(group.threads, &job, &progress, static_cast<bool>(group.report));
    failure.rethrow();
    // After an abort the count says nothing: workers that had not begun by then skip the job.
    if (abort == 0 && job.begun == 0)
        throw ExceptionMsg("The system gives no thread to work on");
    if (abort == 0 && job.begun < group.threads)
        log.warning("The system gave only %d of %d threads", job.begun.load(), group.threads);
}

}  // namespace Tarnkit
