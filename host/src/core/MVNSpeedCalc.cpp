#include "core/MVNSpeedCalc.h"

#include <cstdio>

namespace Morvane {

MVNSpeedCalc::MVNSpeedCalc(int window) : mWindow(window < 2 ? 2 : (window > kMaxWindow ? kMaxWindow : window)) {
    reset();
}

void MVNSpeedCalc::tick(int64_t mediaMs, int64_t wallMs) {
    if (mCount > 0) {
        const int last = (mNext + mWindow - 1) % mWindow;
        if (wallMs <= mWall[last]) {
            return;
        }
        if (mediaMs < mMedia[last]) {
            mCount = 0;
            mNext = 0;
        }
    }
    mMedia[mNext] = mediaMs;
    mWall[mNext] = wallMs;
    mNext = (mNext + 1) % mWindow;
    if (mCount < mWindow) {
        ++mCount;
    }
    update();
}

void MVNSpeedCalc::reset() {
    mCount = 0;
    mNext = 0;
    mSpeed = 0;
    mSpeedReal = 0;
    update();
}

void MVNSpeedCalc::update() {
    if (mCount >= 2) {
        const int newest = (mNext + mWindow - 1) % mWindow;
        const int previous = (mNext + mWindow - 2) % mWindow;
        const int oldest = (mNext + mWindow - mCount) % mWindow;
        mSpeed = static_cast<float>(static_cast<double>(mMedia[newest] - mMedia[oldest]) /
                                    static_cast<double>(mWall[newest] - mWall[oldest]));
        mSpeedReal = static_cast<float>(static_cast<double>(mMedia[newest] - mMedia[previous]) /
                                        static_cast<double>(mWall[newest] - mWall[previous]));
    }
    std::snprintf(mText, sizeof mText, "speed:%.2f real:%.2f", mSpeed, mSpeedReal);
}

}  // namespace Morvane
