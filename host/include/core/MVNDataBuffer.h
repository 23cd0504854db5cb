#pragma once
#include <cstdint>

#include "core/MVNByteBuffer.h"

namespace Morvane {

// A byte queue on top of a byte buffer: bytes are pushed at used() and pulled
// from offset(). When the pulled-off head reaches blockSize bytes, the next
// push or alloc moves the valid bytes back to the start (adjust). No lock:
// MVNDataBufferBlock is the form for two threads.
class MVNDataBuffer : public MVNByteBuffer {
public:
    explicit MVNDataBuffer(int blockSize = 4096);
    ~MVNDataBuffer() override = default;

    // Room for n more bytes after used(); 0, or -1 when memory runs out.
    virtual int alloc(int n);
    // Appends n bytes; grows to the need plus the need's remainder modulo
    // 1024. 0, or -1 (buffer unchanged) on bad arguments or out of memory.
    virtual int pushData(const uint8_t* data, int n);
    // Copies n bytes from the head and drops them; -1 without change when
    // fewer are there. Pulling the last byte rewinds both marks to 0.
    virtual int pullData(uint8_t* out, int n);
    // Counts n bytes written at tail() as valid; -1 past size().
    virtual int advanceUsed(int n);
    // Drops n bytes from the head. Past used() the buffer is emptied and the
    // result is -1.
    virtual int advanceOffset(int n);
    // Moves the valid bytes to the start once offset() reaches blockSize.
    virtual void adjust();
    virtual void reset();

    bool peep(int n) const { return mUsed - mOffset >= n; }
    uint8_t* buffer() { return ptr() ? ptr() + mOffset : nullptr; }
    // Where the next byte is written (after alloc).
    uint8_t* tail() { return ptr() ? ptr() + mUsed : nullptr; }
    int offset() const { return mOffset; }
    int used() const { return mUsed; }
    int blockSize() const { return mBlockSize; }
    // Number of this data buffer, counted over all data buffers built.
    int dataId() const { return mDataId; }

    void debug(const char* tag);

protected:
    // Unlocked bodies, so that the locked subclass can run one inside another.
    int allocImpl(int n);
    int pushDataImpl(const uint8_t* data, int n);
    int pullDataImpl(uint8_t* out, int n);
    int advanceUsedImpl(int n);
    int advanceOffsetImpl(int n);
    void adjustImpl();

    int mUsed = 0;
    int mOffset = 0;
    int mDataId;
    int mBlockSize;
};

}  // namespace Morvane
