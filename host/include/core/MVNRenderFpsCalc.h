#pragma once
#include <cstdint>

namespace Morvane {

// How many frames per second the renderer could make: the inverse of the
// mean time spent on the last `window` renders. Bracket each render with
// beginFrame() and endFrame(), or feed durations with addRenderTime().
class MVNRenderFpsCalc {
public:
    static constexpr int kMaxWindow = 64;

    explicit MVNRenderFpsCalc(int window = 30);

    void beginFrame();
    void endFrame();  // ignored without beginFrame
    void addRenderTime(int64_t micros);
    void reset();

    // 0 until a render with a duration is in the window.
    float getMeanFPS() const { return mMean; }
    // "render fps:%.2f (%.3f ms)", the rate and the mean duration.
    const char* getString() const { return mText; }

private:
    void update();

    int mWindow;
    int mCount = 0;
    int64_t mBegin = 0;  // microseconds of the open beginFrame; 0 when none
    int64_t mSum = 0;    // microseconds of the renders in the window
    int64_t mDurations[kMaxWindow];
    int mNext = 0;
    float mMean = 0;
    char mText[64];
};

}  // namespace Morvane
