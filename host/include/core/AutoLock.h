#pragma once
#include "core/BaseLock.h"

namespace Morvane {

// Scope guard: locks on construction, unlocks on destruction (also when the
// scope is left by an exception).
class AutoLock {
public:
    explicit AutoLock(BaseLock& lock) : mLock(lock) { mLock.lock(); }
    ~AutoLock() { mLock.unlock(); }
    AutoLock(const AutoLock&) = delete;
    AutoLock& operator=(const AutoLock&) = delete;

private:
    BaseLock& mLock;
};

}  // namespace Morvane
