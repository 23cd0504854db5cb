#include "core/Condition11.h"

#include <chrono>

namespace Morvane {

void Condition11::wait() {
    std::unique_lock<std::mutex> guard(mMutex);
    mCond.wait(guard);
}

void Condition11::timedWait(int ms) {
    std::unique_lock<std::mutex> guard(mMutex);
    mCond.wait_for(guard, std::chrono::milliseconds(ms));
}

void Condition11::signal() { mCond.notify_one(); }
void Condition11::signal_all() { mCond.notify_all(); }

}  // namespace Morvane
