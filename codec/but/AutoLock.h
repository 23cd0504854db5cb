#pragma once
#include "BaseLock.h"

namespace but {

// Scope guard: locks on construction, unlocks when the scope is left, also
// by an early return or an exception.
class AutoLock {
public:
    explicit AutoLock(BaseLock& lock);
    ~AutoLock();
    AutoLock(const AutoLock&) = delete;
    AutoLock& operator=(const AutoLock&) = delete;

private:
    BaseLock& mLock;
};

}  // namespace but
