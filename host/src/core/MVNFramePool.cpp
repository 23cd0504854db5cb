#include "core/MVNFramePool.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <new>

#include "core/AutoLock.h"
#include "core/MVNByteBufferPool.h"
#include "core/MVNFrame.h"
#include "core/MVNLog.h"

namespace Morvane {

namespace {
const char* kTag = "Morvane::MVNFramePool";
}

MVNFramePool::MVNFramePool() {
    const char* env = std::getenv("MORVANE_FRAME_POOL_LIMIT");
    if (env == nullptr || *env == '\0') return;
    char* end = nullptr;
    errno = 0;
    long value = std::strtol(env, &end, 10);
    if (errno != 0 || *end != '\0' || value < 1 || value > 1000000000L) {
        log_error(kTag, "MORVANE_FRAME_POOL_LIMIT ignored, not a positive number:%s, limit %d kept", env, mLimit);
        return;
    }
    mLimit = static_cast<int>(value);
}

MVNFramePool* MVNFramePool::getSingleton() {
    // Never destroyed, like the byte-buffer pool: frames can come back late.
    static MVNFramePool* instance = new MVNFramePool;
    return instance;
}

MVNFrame* MVNFramePool::pull(int type) {
    MVNFrame* frame = nullptr;
    int refused = 0;
    int out = 0;
    int limit = 0;
    {
        // The test of the limit and the taking of a frame are one step, so
        // that threads pulling at once can't pass the limit together.
        AutoLock guard(mLock);
        out = static_cast<int>(mOutstanding.size());
        limit = mLimit;
        if (out >= limit) {
            refused = ++mRefused;
        } else {
            if (!mFree.empty()) {
                frame = mFree.back();
                mFree.pop_back();
            } else {
                frame = new (std::nothrow) MVNFrame();
            }
            if (frame) {
                mOutstanding.insert(frame);
                refused = -mRefused;
                mRefused = 0;
            }
        }
    }
    // Logged outside the lock: a log sink may take locks of its own.
    if (refused == 1) {
        log_warn(kTag, "pull refused, %d frames out, the limit is %d", out, limit);
    } else if (refused < 0) {
        log_info(kTag, "pull served again after %d refused", -refused);
    }
    if (!frame) {
        if (refused == 0) log_error(kTag, "pull failed, out of memory");
        return nullptr;
    }
    frame->setType(type);
    return frame;
}

void MVNFramePool::push(MVNFrame* frame) {
    if (!frame) {
        return;
    }
    {
        AutoLock guard(mLock);
        if (mOutstanding.erase(frame) == 0) {
            if (std::find(mFree.begin(), mFree.end(), frame) != mFree.end()) {
                log_error(kTag, "push of a frame already pushed back");
            } else {
                log_error(kTag, "push of a frame not from the pool");
            }
            return;
        }
    }
    MVNByteBufferPool::sRelease(frame->buffer());
    frame->reset();
    AutoLock guard(mLock);
    if (static_cast<int>(mFree.size()) < kMaxFreeFrames) {
        mFree.push_back(frame);
    } else {
        delete frame;
    }
}

int MVNFramePool::freeCount() {
    AutoLock guard(mLock);
    return static_cast<int>(mFree.size());
}

int MVNFramePool::outstandingCount() {
    AutoLock guard(mLock);
    return static_cast<int>(mOutstanding.size());
}

int MVNFramePool::limit() {
    AutoLock guard(mLock);
    return mLimit;
}

void MVNFramePool::setLimit(int limit) {
    if (limit < 1) {
        log_error(kTag, "setLimit refused, not a positive number:%d", limit);
        return;
    }
    AutoLock guard(mLock);
    mLimit = limit;
}

}  // namespace Morvane
