#pragma once
#include <cstdint>

namespace Morvane {

class MVNClock;

// The clock of a playing video: a plain MVNClock at normal speed, an
// MVNSpeedClock otherwise. Timestamps count from `start`, the media time at
// which play began. Starts stopped, like MVNClock.
class MVNVideoClock {
public:
    MVNVideoClock(int64_t start, double speed);
    ~MVNVideoClock();
    MVNVideoClock(const MVNVideoClock&) = delete;
    MVNVideoClock& operator=(const MVNVideoClock&) = delete;

    // `start` plus the (scaled) time played.
    int64_t GetTimestamp() const;
    void start();
    void pause();

    // The clock in use (owned).
    MVNClock* clock() const { return mClock; }
    int64_t startTime() const { return mStart; }

private:
    MVNClock* mClock;
    int64_t mStart;
};

}  // namespace Morvane
