#pragma once
#include <unordered_set>
#include <vector>

#include "core/Mutex.h"

namespace Morvane {

class MVNFrame;

// The frames' own pool, behind MVNFrame::pullFromPool and pushBackPool.
// Thread-safe. Frames are kept for reuse up to a bound; beyond it a returned
// frame is deleted.
//
// Frames out at once are bounded too, so that a holder that never gives its
// frames back (a stalled consumer, a leak) ends in refused pulls instead of
// in all of the machine's memory. The bound is kDefaultLimit, or the
// environment's MORVANE_FRAME_POOL_LIMIT when that is a positive number, or
// what setLimit says. A refused pull returns null; the first of a run of
// refusals is logged as a warning (the caller that got null says what it
// lost), and the end of the run once a pull is served again.
class MVNFramePool {
public:
    static MVNFramePool* getSingleton();

    // A cleared frame of `type`, or null when the limit is reached.
    MVNFrame* pull(int type);
    // Gives the frame's buffer back to MVNByteBufferPool, clears the frame
    // and keeps it for reuse. A frame pushed twice or not from this pool is
    // logged and left alone.
    void push(MVNFrame* frame);

    int freeCount();
    int outstandingCount();
    // Frames that may be out at once; a value below 1 is refused (logged)
    // and the limit stays.
    int limit();
    void setLimit(int limit);

    static constexpr int kMaxFreeFrames = 64;
    // Far above what any timeline holds at once (a frame per active clip
    // and filter, a few in the readers' hand-over), so that only a leak
    // reaches it.
    static constexpr int kDefaultLimit = 65536;

private:
    MVNFramePool();

    Mutex mLock;
    std::vector<MVNFrame*> mFree;
    std::unordered_set<MVNFrame*> mOutstanding;
    int mLimit = kDefaultLimit;
    // Pulls refused since the last one served; 0 outside a run of refusals.
    int mRefused = 0;
};

}  // namespace Morvane
