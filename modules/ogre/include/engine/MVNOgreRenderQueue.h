#pragma once
#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>

#include "MVNOgreExport.h"
#include "core/Mutex11.h"

namespace Morvane {

class MVNOgreRenderable;
class MVNRenderThread;

// The render thread's work list. Items run strictly in order of arrival, one
// at a time, with queueLock held for the whole run: a posting thread is thus
// throttled to the render thread's pace, and a running item must never post
// to the queue itself.
class MVN_OGRE_API MVNOgreRenderQueue {
public:
    // Where a finished item goes: the manager's pool by default. The queue
    // can be given another home for its items so that it runs without the
    // manager (tests, tools).
    using Recycler = std::function<void(MVNOgreRenderable*)>;

    MVNOgreRenderQueue();
    explicit MVNOgreRenderQueue(Recycler recycler);
    // Stops a running queue first (which runs what is queued); items added
    // after a stop are recycled without being run.
    ~MVNOgreRenderQueue();
    MVNOgreRenderQueue(const MVNOgreRenderQueue&) = delete;
    MVNOgreRenderQueue& operator=(const MVNOgreRenderQueue&) = delete;

    // Starts the render thread; always 0. A second start only warns.
    int start();
    // Runs everything still queued, then ends and joins the render thread.
    void stop();
    // Appends and returns at once. The caller blocks only while an item runs.
    void addRenderable(MVNOgreRenderable* renderable);
    // Appends and waits for the item (see MVNOgreRenderable::wait).
    void addRenderableWait(MVNOgreRenderable* renderable);
    // True while running and work is queued or an item runs. Takes no lock,
    // so it can be asked from anywhere, even while an item runs.
    bool hasRenderable() const;

private:
    friend class MVNRenderThread;
    // The render thread's loop.
    void _work();
    // Recycles unrun what is left; only the destructor calls it.
    void _clear();
    // Takes the front item off and runs its function; queueLock is held by
    // the caller. Returns the item for finish().
    MVNOgreRenderable* runFront();
    // Marks the item done, wakes its waiter and recycles it.
    void finish(MVNOgreRenderable* renderable);

    std::deque<MVNOgreRenderable*> mRenderables;  // the work, first in first out
    std::atomic<bool> mRunning{false};            // the thread is meant to run
    MVNRenderThread* mThread = nullptr;           // owned; built at the first start
    Mutex11 mLifecycleLock;                       // orders start and stop
    Mutex11 mQueueLock;                           // guards mRenderables, held while an item runs
    std::condition_variable mCondition;           // work has arrived; waited on with mQueueLock
    std::atomic<bool> mExecuting{false};          // an item is running right now
    std::atomic<size_t> mPending{0};              // mRenderables.size(), readable without the lock
    Recycler mRecycler;
};

}  // namespace Morvane
