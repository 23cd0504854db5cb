#pragma once
#include <mutex>

#include "BaseLock.h"

namespace but {

// A non-recursive mutex on the standard library. A thread that locks it twice
// deadlocks: public decoder calls take it once and never call each other.
class Mutex11 : public BaseLock {
public:
    Mutex11();
    ~Mutex11() override;
    Mutex11(const Mutex11&) = delete;
    Mutex11& operator=(const Mutex11&) = delete;

    void lock() override;
    void unlock() override;
    // Takes the lock only if it is free; true when taken.
    bool tryLock();

private:
    std::mutex mMutex;
};

}  // namespace but
