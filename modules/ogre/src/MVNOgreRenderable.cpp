#include "MVNOgreRenderable.h"

#include <mutex>

#include "AutoLock.h"
#include "MVNLog.h"

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
        // The condition has its own mutex; a signal that falls between the
        // test above and this wait is lost, and the bounded step repairs it.
        guard.unlock();
        mCondition.timedWait(kWaitStepMs);
        guard.lock();
    }
    log_warn(kTag, "%s run too long time", mName.c_str());
}

void MVNOgreRenderable::signal() {
    AutoLock guard(mLock);
    mCondition.signal();
}

void MVNOgreRenderable::complete() {
    setCompleted(true);
    signal();
}

}  // namespace Morvane
