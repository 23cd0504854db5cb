#include "core/MVNFramePool.h"

#include <algorithm>
#include <new>

#include "core/AutoLock.h"
#include "core/MVNByteBufferPool.h"
#include "core/MVNFrame.h"
#include "core/MVNLog.h"

namespace Morvane {

namespace {
const char* kTag = "Morvane::MVNFramePool";
}

MVNFramePool* MVNFramePool::getSingleton() {
    // Never destroyed, like the byte-buffer pool: frames can come back late.
    static MVNFramePool* instance = new MVNFramePool;
    return instance;
}

MVNFrame* MVNFramePool::pull(int type) {
    MVNFrame* frame = nullptr;
    {
        AutoLock guard(mLock);
        if (!mFree.empty()) {
            frame = mFree.back();
            mFree.pop_back();
        }
    }
    if (!frame) {
        frame = new (std::nothrow) MVNFrame();
        if (!frame) {
            log_error(kTag, "pull failed, out of memory");
            return nullptr;
        }
    }
    frame->setType(type);
    AutoLock guard(mLock);
    mOutstanding.insert(frame);
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

}  // namespace Morvane
