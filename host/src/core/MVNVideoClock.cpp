#include "core/MVNVideoClock.h"

#include <cmath>

#include "core/MVNSpeedClock.h"

namespace Morvane {

MVNVideoClock::MVNVideoClock(int64_t start, double speed) : mClock(nullptr), mStart(start) {
    // Normal speed takes the plain clock: no multiplication, no truncation.
    if (std::fabs(speed - 1.0) < 1.1920928955078125e-7) {
        mClock = new MVNClock();
    } else {
        mClock = new MVNSpeedClock(speed);
    }
}

MVNVideoClock::~MVNVideoClock() { delete mClock; }

int64_t MVNVideoClock::GetTimestamp() const { return mStart + mClock->GetTimestamp(); }
void MVNVideoClock::start() { mClock->start(); }
void MVNVideoClock::pause() { mClock->pause(); }

}  // namespace Morvane
