#include "pelk/support/worker_thread.h"

#include "pelk/base/debug_print.h"
#include "pelk/base/shared_field.h"

namespace Tarnkit {

int GroupMember::getProgress() const {
    const int counter = readShared(worker->progress);
    const int last = lastProgress;
    // Read last: while the job runs, the counter that was read before belongs to this group.
    return last == kRunning ? counter : last;
}

void ThreadLatch::countDown(int threads) {
    if (threads > 0 && count.fetch_sub(threads) == threads)
        event.set();
}

bool ThreadLatch::wait() {
    constexpr int kMilliseconds = 200;
    if (event.waitFor(kMilliseconds) && count > 0) {
        // The signal of an earlier run came late. If ours comes between the two lines, the count
        // tells.
        event.reset();
    }
    return count < 1;
}

MessageQueue::MessageQueue() {
    // One to run and one to end: a worker gets no other before it has taken the first.
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
    // A worker that was handed out just before it was told to end still gets its work: a run would
    // wait for it for ever.
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
        // Under the lock: whoever posts sets the event behind it, so no message is slept through.
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
    // Idle first, or the caller might start its next run while the last worker is not yet to be
    // had, and make a thread for nothing. From then on only the copy of the latch is ours.
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
