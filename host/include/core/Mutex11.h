#pragma once
#include <mutex>

#include "core/BaseLock.h"

namespace Morvane {

// A non-recursive mutex on the standard library. lock() throws
// std::system_error when the lock cannot be taken.
class Mutex11 : public BaseLock {
public:
    Mutex11() = default;
    Mutex11(const Mutex11&) = delete;
    Mutex11& operator=(const Mutex11&) = delete;

    void lock() override { mMutex.lock(); }
    void unlock() override { mMutex.unlock(); }
    std::mutex& mutex() { return mMutex; }

private:
    std::mutex mMutex;
};

}  // namespace Morvane
