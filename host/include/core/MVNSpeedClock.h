#pragma once
#include "core/MVNClock.h"

namespace Morvane {

// A clock that runs `speed` times as fast as the plain one. The value is
// truncated toward zero.
class MVNSpeedClock : public MVNClock {
public:
    explicit MVNSpeedClock(double speed) : mSpeed(speed) {}

    int64_t GetTimestamp() const override;
    double speed() const { return mSpeed; }

private:
    double mSpeed;
};

}  // namespace Morvane
