#pragma once
#include <cstdint>
#include <string>

namespace Morvane {

// How fast media time advances against wall time while playing: 1 is real
// time, 2 twice as fast. getSpeed() is the mean over the last `window`
// ticks; getSpeedReal() the last step alone.
class MVNSpeedCalc {
public:
    static constexpr int kMaxWindow = 64;

    explicit MVNSpeedCalc(int window = 16);

    // A sample: media time and wall time, both in milliseconds. A wall time
    // that doesn't advance is ignored; a media time going back (a seek)
    // restarts the window.
    void tick(int64_t mediaMs, int64_t wallMs);
    void reset();

    float getSpeed() const { return mSpeed; }
    float getSpeedReal() const { return mSpeedReal; }
    // "speed:%.2f real:%.2f"
    const char* getString() const { return mText; }
    std::string toString() const { return mText; }

private:
    void update();

    int mWindow;
    int mCount = 0;
    int mNext = 0;
    float mSpeed = 0;
    float mSpeedReal = 0;
    int64_t mMedia[kMaxWindow];
    int64_t mWall[kMaxWindow];
    char mText[256];
};

}  // namespace Morvane
