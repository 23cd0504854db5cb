#include "core/MVNClock.h"

#include <chrono>

namespace Morvane {

int64_t MVNClock::now() {
    using namespace std::chrono;
    // Shifted by one so that 0 stays free to mean "stopped".
    return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count() + 1;
}

int64_t MVNClock::GetTimestamp() const { return mOrigin ? mBase + (now() - mOrigin) : mBase; }

void MVNClock::start() {
    if (!mOrigin) {
        mOrigin = now();
    }
}

void MVNClock::pause() {
    mBase = GetTimestamp();
    mOrigin = 0;
}

void MVNClock::setTimestamp(int64_t ms) {
    mBase = ms;
    if (mOrigin) {
        mOrigin = now();
    }
}

}  // namespace Morvane
