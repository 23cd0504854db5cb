#pragma once
#include <cstdint>

namespace Morvane {

// Frames per second of a stream of frames, as the mean over the last
// `window` frames (at most kMaxWindow). Not thread-safe: one owner feeds and
// reads it.
class MVNFpsCalc {
public:
    static constexpr int kMaxWindow = 64;

    explicit MVNFpsCalc(int window = 30);

    // One frame now, or at `ms` on any steady millisecond scale.
    void addFrame();
    void addFrame(int64_t ms);
    void reset();

    // 0 until two frames with time between them are in the window.
    float getMeanFPS() const { return mMean; }
    // "fps:%.2f"
    const char* getString() const { return mText; }

private:
    void update();

    int64_t mTimes[kMaxWindow];
    int mWindow;
    int mCount = 0;  // frames in the window
    int mNext = 0;   // slot of the next frame
    char mText[64];
    float mMean = 0;
};

}  // namespace Morvane
