#include "engine/MVNOgreRenderable.h"

#include <chrono>
#include <mutex>

#include "core/AutoLock.h"
#include "core/MVNLog.h"

namespace Morvane {

static const char* const kTag = "Morvane::MVNOgreRenderable";

// Waits of at most kWaitStepMs while the item lies in the queue; the count
// runs out after kWaitSteps + 1 of them, about ten seconds in all.
static const int kWaitSteps = 1000;
static const int kWaitStepMs = 10;

MVNOgreRenderable::MVNOgreRenderable(std::function<void()> callback) : mCallback(std::move(callback)) {}

MVNOgreRenderable::~MVNOgreRenderable() {
    log_debug(kTag, "destory name:%s ptr:%p", mName.c_str(), static_cast<void*>(this));
}

void MVNOgreRenderable::setCallback(std::function<void()> callback) {
    AutoLock guard(mLock);
    mCallback = std::move(callback);
}

void MVNOgreRenderable::setName(const char* name) { mName = name ? name : ""; }

void MVNOgreRenderable::reset() {
    AutoLock guard(mLock);
    mBlock = false;
    mCompleted = false;
    mCallback = nullptr;
    ++mGeneration;
}

unsigned MVNOgreRenderable::generation() {
    AutoLock guard(mLock);
    return mGeneration;
}

void MVNOgreRenderable::exec() {
    AutoLock guard(mLock);
    if (mCallback) {
        mCallback();
    }
}

void MVNOgreRenderable::wait() { wait(generation()); }

void MVNOgreRenderable::wait(unsigned generation) {
    std::unique_lock<std::mutex> guard(mLock.mutex());
    for (int count = 0;; ++count) {
        if (mCompleted || mGeneration != generation) {
            return;
        }
        if (count > kWaitSteps) {
            break;
        }
        // Releases mLock while it waits and takes it back before the next
        // test: complete() signals under mLock, so a completion can't fall
        // between the test and the wait. While the function runs, exec()
        // holds mLock and the wait ends only with the run, uncounted.
        mCondition.wait_for(guard, std::chrono::milliseconds(kWaitStepMs));
    }
    log_warn(kTag, "%s run too long time", mName.c_str());
}

void MVNOgreRenderable::signal() {
    // Taking the lock orders this signal after a waiter's test of its state;
    // waking it after the lock is released spares the woken waiter a block
    // on a lock that is still held.
    { AutoLock guard(mLock); }
    mCondition.notify_all();
}

void MVNOgreRenderable::complete() {
    setCompleted(true);
    signal();
}

}  // namespace Morvane
