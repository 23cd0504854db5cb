#pragma once
#include <unordered_set>
#include <vector>

#include "core/Mutex.h"

namespace Morvane {

class MVNFrame;

// The frames' own pool, behind MVNFrame::pullFromPool and pushBackPool.
// Thread-safe. Frames are kept for reuse up to a bound; beyond it a returned
// frame is deleted.
class MVNFramePool {
public:
    static MVNFramePool* getSingleton();

    MVNFrame* pull(int type);
    // Gives the frame's buffer back to MVNByteBufferPool, clears the frame
    // and keeps it for reuse. A frame pushed twice or not from this pool is
    // logged and left alone.
    void push(MVNFrame* frame);

    int freeCount();
    int outstandingCount();

    static constexpr int kMaxFreeFrames = 64;

private:
    MVNFramePool() = default;

    Mutex mLock;
    std::vector<MVNFrame*> mFree;
    std::unordered_set<MVNFrame*> mOutstanding;
};

}  // namespace Morvane
