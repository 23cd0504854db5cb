#pragma once
#include "core/Condition11.h"
#include "core/MVNDataBuffer.h"
#include "core/Mutex11.h"

namespace Morvane {

// MVNDataBuffer for one writer and one reader thread: every change runs
// under a lock, a push wakes the reader, and pullData waits for data up to
// ten times 20 ms before giving up with -1.
class MVNDataBufferBlock : public MVNDataBuffer {
public:
    explicit MVNDataBufferBlock(int blockSize = 4096) : MVNDataBuffer(blockSize) {}

    static constexpr int kPullTries = 10;
    static constexpr int kPullWaitMs = 20;

    int alloc(int n) override;
    int pushData(const uint8_t* data, int n) override;
    int pullData(uint8_t* out, int n) override;
    int advanceUsed(int n) override;
    int advanceOffset(int n) override;
    void adjust() override;
    // Without the lock: only while neither side runs.
    void reset() override;

private:
    Mutex11 mLock;
    Condition11 mCond;
};

}  // namespace Morvane
