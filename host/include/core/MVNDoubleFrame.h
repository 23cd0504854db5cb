#pragma once
#include <deque>

#include "core/Mutex11.h"

namespace Morvane {

class MVNFrame;

// Hand-over of frames from the render thread to a consumer thread. Bounded:
// when full, update() drops the oldest frame back to its pool, so a slow
// consumer sees the newest pictures and memory stays flat.
class MVNDoubleFrame {
public:
    explicit MVNDoubleFrame(int capacity = 2);
    ~MVNDoubleFrame();
    MVNDoubleFrame(const MVNDoubleFrame&) = delete;
    MVNDoubleFrame& operator=(const MVNDoubleFrame&) = delete;

    void update(MVNFrame* frame);
    MVNFrame* pop_front();  // null when empty
    void reset();           // returns every frame to the pool
    int count();
    int dropped();          // frames dropped since construction

private:
    Mutex11 mLock;
    std::deque<MVNFrame*> mFrames;
    int mCapacity;
    int mDropped = 0;
};

}  // namespace Morvane
