#pragma once
#include <condition_variable>
#include <mutex>

namespace Morvane {

// A condition with a mutex of its own, never paired with a caller's lock. A
// signal that falls between a waiter's test and its wait is lost, so waiters
// use timedWait with a short bound and test their state again afterwards.
class Condition11 {
public:
    Condition11() = default;
    Condition11(const Condition11&) = delete;
    Condition11& operator=(const Condition11&) = delete;

    void wait();
    // Waits at most `ms` milliseconds; the caller tests its own state after.
    void timedWait(int ms);
    // Wake one or all waiters, without taking the mutex.
    void signal();
    void signal_all();

private:
    std::mutex mMutex;
    std::condition_variable mCond;
};

}  // namespace Morvane
