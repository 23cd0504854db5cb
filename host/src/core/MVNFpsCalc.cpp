#include "core/MVNFpsCalc.h"

#include <cstdio>

#include "core/MVNClock.h"

namespace Morvane {

MVNFpsCalc::MVNFpsCalc(int window) : mWindow(window < 2 ? 2 : (window > kMaxWindow ? kMaxWindow : window)) {
    reset();
}

void MVNFpsCalc::addFrame() { addFrame(MVNClock::now()); }

void MVNFpsCalc::addFrame(int64_t ms) {
    mTimes[mNext] = ms;
    mNext = (mNext + 1) % mWindow;
    if (mCount < mWindow) {
        ++mCount;
    }
    update();
}

void MVNFpsCalc::reset() {
    mCount = 0;
    mNext = 0;
    mMean = 0;
    update();
}

void MVNFpsCalc::update() {
    if (mCount >= 2) {
        const int64_t newest = mTimes[(mNext + mWindow - 1) % mWindow];
        const int64_t oldest = mTimes[(mNext + mWindow - mCount) % mWindow];
        // n frames span n - 1 intervals.
        mMean = newest > oldest ? static_cast<float>((mCount - 1) * 1000.0 / static_cast<double>(newest - oldest))
                                : 0.0f;
    }
    std::snprintf(mText, sizeof mText, "fps:%.2f", mMean);
}

}  // namespace Morvane
