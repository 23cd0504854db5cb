#include "core/MVNDoubleFrame.h"

#include "core/AutoLock.h"
#include "core/MVNFrame.h"

namespace Morvane {

MVNDoubleFrame::MVNDoubleFrame(int capacity) : mCapacity(capacity < 1 ? 1 : capacity) {}

MVNDoubleFrame::~MVNDoubleFrame() { reset(); }

void MVNDoubleFrame::update(MVNFrame* frame) {
    if (!frame) {
        return;
    }
    MVNFrame* dropped = nullptr;
    {
        AutoLock guard(mLock);
        mFrames.push_back(frame);
        if (static_cast<int>(mFrames.size()) > mCapacity) {
            dropped = mFrames.front();
            mFrames.pop_front();
            ++mDropped;
        }
    }
    // Outside the lock: the pool has a lock of its own.
    MVNFrame::pushBackPool(dropped);
}

MVNFrame* MVNDoubleFrame::pop_front() {
    AutoLock guard(mLock);
    if (mFrames.empty()) {
        return nullptr;
    }
    MVNFrame* frame = mFrames.front();
    mFrames.pop_front();
    return frame;
}

void MVNDoubleFrame::reset() {
    std::deque<MVNFrame*> frames;
    {
        AutoLock guard(mLock);
        frames.swap(mFrames);
    }
    for (MVNFrame* frame : frames) {
        MVNFrame::pushBackPool(frame);
    }
}

int MVNDoubleFrame::count() {
    AutoLock guard(mLock);
    return static_cast<int>(mFrames.size());
}

int MVNDoubleFrame::dropped() {
    AutoLock guard(mLock);
    return mDropped;
}

}  // namespace Morvane
