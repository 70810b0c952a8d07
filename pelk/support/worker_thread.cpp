#include "pelk/support/worker_thread.h"

#include "pelk/base/debug_print.h"
#include "pelk/base/shared_field.h"

namespace Tarnkit {

int GroupMember::getProgress() const {
    const int counter = readShared(worker->progress);
    const int last = lastProgress;
    // `lastProgress` is read behind the counter: if it still says "running" then, the worker had
    // not gone on to another group when its counter was read.
    return last == kRunning ? counter : last;
}

void ThreadLatch::countDown(int threads) {
    if (threads > 0 && count.fetch_sub(threads) == threads)
        event.set();
}

bool ThreadLatch::wait() {
    constexpr int kMilliseconds = 200;
    if (event.waitFor(kMilliseconds) && count > 0) {
        // The signal of an earlier run came late: its last worker counts before it signals. Should
        // our own signal come between the wait and this reset, the count below still ends the wait.
        event.reset();
    }
    return count < 1;
}

MessageQueue::MessageQueue() {
    // Two at most wait at once, one to run and one to end: a worker is given work only when it is
    // idle, so it has taken the message before.
    for (int i = 0; i < 2; ++i) {
        Node* node = nodes.take();
        node->next = std::exchange(freeNodes, node);
    }
}

MessageQueue::Node* MessageQueue::newNode() {
    if (!freeNodes)
        return nodes.take();
    return std::exchange(freeNodes, freeNodes->next);
}

void MessageQueue::put(int code) {
    Node* node = newNode();
    node->code = code;
    node->next = nullptr;
    (tail ? tail->next : head) = node;
    tail = node;
    ++count;
}

int MessageQueue::take() {
    Node* node = std::exchange(head, head->next);
    if (!head)
        tail = nullptr;
    --count;
    node->next = std::exchange(freeNodes, node);
    return node->code;
}

bool WorkerThread::start(int stackSize) {
    // The thread's own reference, taken before it runs: the manager may drop the other one sooner
    // than the thread gets its first slice.
    ++refCount;
    if (handle.start(enter, this, stackSize))
        return true;
    state = ended;
    Ref<WorkerThread>::drop(*this);
    return false;
}

void WorkerThread::post(int code) {
    spinEnter(queueLock);
    queue.put(code);
    queueLock.leave();
    wakeEvent.set();
}

void WorkerThread::settleCount() {
    if (owesCount.exchange(false))
        latch->countDown(1);
}

void WorkerThread::enter(void* worker) {
    static_cast<WorkerThread*>(worker)->processMessages();
    debugPrint("[WinThreadManager] Thread is terminating\n");
}

void WorkerThread::processMessages() {
    tlsIndex.set(this);
    state = handedOut;
    // The message to end can overtake the work of a run that has claimed this worker already. The
    // worker waits for that work and does it, or the run would wait for ever.
    for (bool ending = false; !ending || state != idle;) {
        switch (waitForMessage()) {
            case kRunJob:
                runJob();
                break;
            case kRunTask:
                runTask();
                break;
            case kEnd:
                ending = true;
                break;
            default:
                break;
        }
    }
    debugPrint("[WinThreadManager] Terminating thread %i\n", index);
    state = ended;
    Ref<WorkerThread>::drop(*this);
}

int WorkerThread::waitForMessage() {
    spinEnter(queueLock);
    while (queue.isEmpty()) {
        // Reset under the lock: whoever posts puts the message in under the lock and sets the event
        // after it, so a signal can't be reset away while its message is still unseen.
        wakeEvent.reset();
        queueLock.leave();
        wakeEvent.wait();
        spinEnter(queueLock);
    }
    const int code = queue.take();
    queueLock.leave();
    return code;
}

void WorkerThread::runJob() {
    state = running;
    if (readShared(*abortFlag) == 0) {
        if (const char* name = job->getThreadName())
            platform::Thread::setName(name);
        job->run(abortFlag, &progress, index, groupSize);
    }
    member->lastProgress = progress;
    // Idle before the latch is counted down: its caller may start the next run at once, and would
    // make a new thread if this worker could not be claimed yet. Once it is idle its fields belong
    // to whoever claims it, so the latch is counted down through a copy.
    const Ref<ThreadLatch> finished = latch;
    const bool owes = owesCount.exchange(false);
    state = idle;
    if (owes)
        finished->countDown(1);
}

void WorkerThread::runTask() {
    state = running;
    if (const char* name = task->getThreadName())
        platform::Thread::setName(name);
    task->run(taskArg);
    state = idle;
}

}  // namespace Tarnkit
