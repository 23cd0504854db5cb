#pragma once

namespace but {

// The lock interface of the decoder library, so that AutoLock guards any of
// its mutexes. The decoder keeps its own lock types to stay usable without
// the host framework.
class BaseLock {
public:
    virtual ~BaseLock() = default;
    virtual void lock() = 0;
    virtual void unlock() = 0;
};

}  // namespace but
