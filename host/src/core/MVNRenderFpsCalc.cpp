#include "core/MVNRenderFpsCalc.h"

#include <chrono>
#include <cstdio>

namespace Morvane {

namespace {
int64_t nowMicros() {
    using namespace std::chrono;
    return duration_cast<microseconds>(steady_clock::now().time_since_epoch()).count() + 1;
}
}  // namespace

MVNRenderFpsCalc::MVNRenderFpsCalc(int window)
    : mWindow(window < 1 ? 1 : (window > kMaxWindow ? kMaxWindow : window)) {
    reset();
}

void MVNRenderFpsCalc::beginFrame() { mBegin = nowMicros(); }

void MVNRenderFpsCalc::endFrame() {
    if (!mBegin) {
        return;
    }
    addRenderTime(nowMicros() - mBegin);
    mBegin = 0;
}

void MVNRenderFpsCalc::addRenderTime(int64_t micros) {
    if (micros < 0) {
        return;
    }
    if (mCount == mWindow) {
        mSum -= mDurations[mNext];
    } else {
        ++mCount;
    }
    mDurations[mNext] = micros;
    mSum += micros;
    mNext = (mNext + 1) % mWindow;
    update();
}

void MVNRenderFpsCalc::reset() {
    mCount = 0;
    mNext = 0;
    mSum = 0;
    mBegin = 0;
    mMean = 0;
    update();
}

void MVNRenderFpsCalc::update() {
    const double meanMicros = mCount ? static_cast<double>(mSum) / mCount : 0.0;
    mMean = meanMicros > 0 ? static_cast<float>(1e6 / meanMicros) : 0.0f;
    std::snprintf(mText, sizeof mText, "render fps:%.2f (%.3f ms)", mMean, meanMicros / 1000.0);
}

}  // namespace Morvane
