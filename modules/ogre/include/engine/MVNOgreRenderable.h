#pragma once
#include <atomic>
#include <condition_variable>
#include <functional>
#include <string>

#include "MVNOgreExport.h"
#include "core/Mutex11.h"

namespace Morvane {

// One piece of work for the render thread: a function and the name under
// which it shows in the logs. A caller that needs the result blocks in
// wait() until the render thread has run it. Renderables are pooled by the
// manager and reused, so a pooled one keeps whatever its last function
// captured until it is filled or reset again.
class MVN_OGRE_API MVNOgreRenderable {
public:
    explicit MVNOgreRenderable(std::function<void()> callback = {});
    virtual ~MVNOgreRenderable();
    MVNOgreRenderable(const MVNOgreRenderable&) = delete;
    MVNOgreRenderable& operator=(const MVNOgreRenderable&) = delete;

    void setCallback(std::function<void()> callback);
    void setName(const char* name);
    const char* getName() const { return mName.c_str(); }
    void setBlock(bool block) { mBlock = block; }
    bool isBlock() const { return mBlock; }
    bool isCompleted() const { return mCompleted; }
    void setCompleted(bool completed) { mCompleted = completed; }
    void setUsePool(bool usePool) { mUsePool = usePool; }
    bool isUsePool() const { return mUsePool; }

    // Makes a pooled renderable fresh for a new waiting caller: no waiter,
    // not completed, no function. usePool and the name stay.
    void reset();
    // Runs the function, if any, holding the lock for the whole run so that a
    // waiter can't time out while its work is under way.
    void exec();
    // Blocks until the work has run. While the item is still queued this
    // gives up after 1001 waits of at most 10 ms and logs
    // "<name> run too long time"; once the work runs it waits without limit.
    void wait();
    // As wait(), but also returns once the renderable was reset for someone
    // else: a pooled item can be completed, recycled and handed to the next
    // caller before its first waiter got the lock back.
    void wait(unsigned generation);
    void signal();
    // Marks the work done and wakes the waiter.
    void complete();
    // Counts the resets; a waiter takes it before it queues the item.
    unsigned generation();

private:
    // Read without the lock by the queue and the waiter: atomics, so that a
    // fresh value is all that is needed and no torn read can happen.
    std::atomic<bool> mBlock{false};      // a caller waits for this item
    std::atomic<bool> mCompleted{false};  // the function has run
    std::atomic<bool> mUsePool{false};    // back to the pool after the run, not deleted
    Mutex11 mLock;                        // guards mCallback, the run and the wait
    // Signalled at completion. It waits on mLock itself, so the test of
    // mCompleted and the wait are one step and no completion is missed.
    std::condition_variable mCondition;
    std::function<void()> mCallback;      // the work
    std::string mName;                    // the work's name in the logs
    unsigned mGeneration = 0;             // bumped by reset(), under mLock
};

}  // namespace Morvane
