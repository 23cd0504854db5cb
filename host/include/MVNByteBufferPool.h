#pragma once
#include <cstdint>
#include <vector>

#include "Mutex.h"

namespace Morvane {

class MVNByteBuffer;

// Process-wide pool of byte buffers. Buffers handed out by sAlloc go back
// with release; a released buffer is reused by a later request it can hold.
class MVNByteBufferPool {
public:
    static MVNByteBufferPool* getSingleton();

    // A buffer of at least `size` bytes (size() is `size`); null on failure.
    static MVNByteBuffer* sAlloc(int size);
    MVNByteBuffer* alloc(int size);
    void release(MVNByteBuffer* buffer);

    // Bytes held by all buffers this pool made, in use or free.
    int64_t total() const { return mTotal; }
    // Buffers waiting for reuse; buffers handed out and not returned.
    int freeCount();
    int outstandingCount();
    // Frees the buffers waiting for reuse.
    void trim();

private:
    MVNByteBufferPool() = default;

    std::vector<MVNByteBuffer*> mFree;
    Mutex mLock;
    int64_t mTotal = 0;
    std::vector<MVNByteBuffer*> mOutstanding;
};

}  // namespace Morvane
