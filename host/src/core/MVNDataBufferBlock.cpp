#include "core/MVNDataBufferBlock.h"

#include "core/AutoLock.h"

namespace Morvane {

int MVNDataBufferBlock::alloc(int n) {
    AutoLock guard(mLock);
    return allocImpl(n);
}

int MVNDataBufferBlock::pushData(const uint8_t* data, int n) {
    int rc;
    {
        AutoLock guard(mLock);
        rc = pushDataImpl(data, n);
    }
    if (rc == 0) {
        mCond.signal();
    }
    return rc;
}

int MVNDataBufferBlock::pullData(uint8_t* out, int n) {
    for (int attempt = 0; attempt < kPullTries; ++attempt) {
        {
            AutoLock guard(mLock);
            if (mUsed - mOffset >= n) {
                return pullDataImpl(out, n);
            }
        }
        // A push between the test above and this wait is not seen until the
        // wait times out: the short bound keeps that delay small.
        mCond.timedWait(kPullWaitMs);
    }
    return -1;
}

int MVNDataBufferBlock::advanceUsed(int n) {
    int rc;
    {
        AutoLock guard(mLock);
        rc = advanceUsedImpl(n);
    }
    // Bytes written through alloc and tail() count as a push for the reader.
    if (rc == 0) {
        mCond.signal();
    }
    return rc;
}

int MVNDataBufferBlock::advanceOffset(int n) {
    AutoLock guard(mLock);
    return advanceOffsetImpl(n);
}

void MVNDataBufferBlock::adjust() {
    AutoLock guard(mLock);
    adjustImpl();
}

void MVNDataBufferBlock::reset() { MVNDataBuffer::reset(); }

}  // namespace Morvane
