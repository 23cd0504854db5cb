#pragma once

namespace Morvane {

// The lock interface shared by the POSIX and the standard-library mutexes, so
// that AutoLock guards either kind.
class BaseLock {
public:
    virtual ~BaseLock() = default;
    virtual void lock() = 0;
    virtual void unlock() = 0;
};

}  // namespace Morvane
