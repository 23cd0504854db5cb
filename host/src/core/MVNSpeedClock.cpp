#include "core/MVNSpeedClock.h"

namespace Morvane {

int64_t MVNSpeedClock::GetTimestamp() const {
    return static_cast<int64_t>(static_cast<double>(MVNClock::GetTimestamp()) * mSpeed);
}

}  // namespace Morvane
