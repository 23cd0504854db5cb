#pragma once
#include <cstdint>
#include <deque>
#include <unordered_map>

#include "core/Mutex.h"

namespace Morvane {

class MVNByteBuffer;

// Process-wide pool of byte buffers, safe to use from any thread. Buffers
// handed out by sAlloc go back with release; a released buffer is reused by a
// later request it can hold. The free list is bounded in count and in bytes,
// so a burst of large pictures does not pin its memory for ever.
class MVNByteBufferPool {
public:
    static MVNByteBufferPool* getSingleton();

    // A buffer of at least `size` bytes (size() is `size`); null on failure.
    static MVNByteBuffer* sAlloc(int size);
    // Gives a buffer back to the pool's singleton; null is ignored.
    static void sRelease(MVNByteBuffer* buffer);
    MVNByteBuffer* alloc(int size);
    // Takes back a buffer of this pool. Null, a buffer released twice or one
    // the pool did not make is logged and left alone.
    void release(MVNByteBuffer* buffer);

    // Bytes held by all buffers this pool made, in use or free.
    int64_t total();
    // Buffers waiting for reuse; buffers handed out and not returned.
    int freeCount();
    int outstandingCount();
    // Frees the buffers waiting for reuse.
    void trim();

    // Bounds of the free list.
    static constexpr int kMaxFreeBuffers = 32;
    static constexpr int64_t kMaxFreeBytes = 256ll * 1024 * 1024;

private:
    MVNByteBufferPool() = default;
    // Drops the oldest free buffers until the bounds hold; under mLock.
    void evictLocked();

    std::deque<MVNByteBuffer*> mFree;  // oldest first
    Mutex mLock;
    int64_t mTotal = 0;
    int64_t mFreeBytes = 0;
    // Buffers handed out, with the storage size counted for each in mTotal.
    std::unordered_map<MVNByteBuffer*, int64_t> mOutstanding;
};

}  // namespace Morvane
