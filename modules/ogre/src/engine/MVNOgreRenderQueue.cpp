#include "engine/MVNOgreRenderQueue.h"

#include <chrono>
#include <exception>
#include <mutex>
#include <system_error>

#include "core/AutoLock.h"
#include "core/MVNLog.h"
#include "engine/MVNOgreManager.h"
#include "engine/MVNOgreRenderable.h"
#include "engine/MVNRenderThread.h"

namespace Morvane {

static const char* const kTag = "Morvane::MVNOgreRenderQueue";

// The longest the render thread sleeps between looks at the queue. Arrivals
// are signalled under the queue's lock, which the wait releases atomically,
// so no wake-up is lost; the step stays as an upper bound all the same.
static const int kIdleStepMs = 20;

MVNOgreRenderQueue::MVNOgreRenderQueue()
    : MVNOgreRenderQueue([](MVNOgreRenderable* r) { MVNOgreManager::getSingleton()->recycleRenderable(r); }) {}

MVNOgreRenderQueue::MVNOgreRenderQueue(Recycler recycler) : mRecycler(std::move(recycler)) {}

MVNOgreRenderQueue::~MVNOgreRenderQueue() {
    if (mRunning) {
        stop();
    }
    _clear();
    delete mThread;
}

int MVNOgreRenderQueue::start() {
    log_info(kTag, "start...");
    // Unlike a bare flag test, the check sits under the lock, so that two
    // concurrent starts can't both start the thread.
    AutoLock guard(mLifecycleLock);
    if (mRunning) {
        log_warn(kTag, "is already running");
        return 0;
    }
    if (!mThread) {
        mThread = new MVNRenderThread(this);
    }
    mRunning = true;
    mThread->start();
    log_info(kTag, "start done");
    return 0;
}

void MVNOgreRenderQueue::stop() {
    log_info(kTag, "stop...");
    // Held so that a second stop waits for the first one's join instead of
    // joining the same thread again.
    AutoLock guard(mLifecycleLock);
    if (!mRunning) {
        log_info(kTag, "not running");
        return;
    }
    mRunning = false;
    {
        AutoLock queueGuard(mQueueLock);
        mCondition.notify_one();
    }
    try {
        mThread->join();
    } catch (const std::system_error& e) {
        // Only a stop from the render thread itself gets here; the loop ends
        // by itself once this item is done.
        log_error(kTag, "stop failed to join the render thread: %s", e.what());
        return;
    }
    log_info(kTag, "stop done");
}

void MVNOgreRenderQueue::addRenderable(MVNOgreRenderable* renderable) {
    AutoLock guard(mQueueLock);
    mRenderables.push_back(renderable);
    ++mPending;
    mCondition.notify_one();
}

void MVNOgreRenderQueue::addRenderableWait(MVNOgreRenderable* renderable) {
    renderable->setBlock(true);
    // Taken before the item can run: once run and recycled, a pooled item
    // may be reset for another caller before this one looks again.
    unsigned generation = renderable->generation();
    addRenderable(renderable);
    renderable->wait(generation);
}

bool MVNOgreRenderQueue::hasRenderable() const {
    if (!mRunning) {
        return false;
    }
    return mPending > 0 || mExecuting;
}

MVNOgreRenderable* MVNOgreRenderQueue::runFront() {
    MVNOgreRenderable* renderable = mRenderables.front();
    mRenderables.pop_front();
    mExecuting = true;
    // A throwing function must neither end the render thread nor strand its
    // waiter: the error is logged and the item completes all the same.
    try {
        renderable->exec();
    } catch (const std::exception& e) {
        log_error(kTag, "%s threw: %s", renderable->getName(), e.what());
    } catch (...) {
        log_error(kTag, "%s threw an unknown exception", renderable->getName());
    }
    --mPending;
    mExecuting = false;
    return renderable;
}

void MVNOgreRenderQueue::finish(MVNOgreRenderable* renderable) {
    renderable->complete();
    try {
        mRecycler(renderable);
    } catch (const std::exception& e) {
        log_error(kTag, "recycle of %s failed: %s", renderable->getName(), e.what());
    }
}

void MVNOgreRenderQueue::_work() {
    std::unique_lock<std::mutex> guard(mQueueLock.mutex(), std::defer_lock);
    while (mRunning) {
        guard.lock();
        while (mRenderables.empty() && mRunning) {
            mCondition.wait_for(guard, std::chrono::milliseconds(kIdleStepMs));
        }
        MVNOgreRenderable* done = mRenderables.empty() ? nullptr : runFront();
        guard.unlock();
        // The waiter is woken after the queue's lock is given up: waking it
        // is a system call, and holding the lock over it would stall every
        // poster, the woken caller's next post included, for its length.
        // The function itself still ran under the lock.
        if (done) {
            finish(done);
        }
    }
    // Stopping: nothing that was queued is dropped. The lock stays held
    // over the whole drain, so that nothing posted meanwhile is run.
    guard.lock();
    while (!mRenderables.empty()) {
        finish(runFront());
    }
    guard.unlock();
}

void MVNOgreRenderQueue::_clear() {
    AutoLock guard(mQueueLock);
    while (!mRenderables.empty()) {
        MVNOgreRenderable* renderable = mRenderables.front();
        mRenderables.pop_front();
        --mPending;
        mRecycler(renderable);
    }
}

}  // namespace Morvane
