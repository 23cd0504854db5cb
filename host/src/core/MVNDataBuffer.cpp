#include "core/MVNDataBuffer.h"

#include <atomic>
#include <cstring>

#include "core/MVNLog.h"

namespace Morvane {

namespace {
std::atomic<int> buffer_count{0};
}

MVNDataBuffer::MVNDataBuffer(int blockSize)
    : mDataId(++buffer_count), mBlockSize(blockSize < 0 ? 0 : blockSize) {}

int MVNDataBuffer::alloc(int n) { return allocImpl(n); }
int MVNDataBuffer::pushData(const uint8_t* data, int n) { return pushDataImpl(data, n); }
int MVNDataBuffer::pullData(uint8_t* out, int n) { return pullDataImpl(out, n); }
int MVNDataBuffer::advanceUsed(int n) { return advanceUsedImpl(n); }
int MVNDataBuffer::advanceOffset(int n) { return advanceOffsetImpl(n); }
void MVNDataBuffer::adjust() { adjustImpl(); }

void MVNDataBuffer::reset() {
    mUsed = 0;
    mOffset = 0;
}

int MVNDataBuffer::allocImpl(int n) {
    if (n < 0) {
        return -1;
    }
    adjustImpl();
    if (size() >= mUsed + n) {
        return 0;
    }
    return resize(mUsed + n) == 0 ? 0 : -1;
}

int MVNDataBuffer::pushDataImpl(const uint8_t* data, int n) {
    if (n < 0 || (n > 0 && !data)) {
        return -1;
    }
    adjustImpl();
    const int need = mUsed + n;
    // The growth is the need plus its remainder modulo 1024: not a multiple
    // of 1024, and kept so because stored sizes are compared across builds.
    if (size() < need && resize(need + need % 1024) != 0) {
        return -1;
    }
    if (n > 0) {
        std::memcpy(ptr() + mUsed, data, static_cast<size_t>(n));
    }
    mUsed += n;
    return 0;
}

int MVNDataBuffer::pullDataImpl(uint8_t* out, int n) {
    if (n < 0 || (n > 0 && !out) || mOffset + n > mUsed) {
        return -1;
    }
    if (n > 0) {
        std::memcpy(out, ptr() + mOffset, static_cast<size_t>(n));
    }
    mOffset += n;
    if (mOffset == mUsed) {
        mOffset = 0;
        mUsed = 0;
    }
    return 0;
}

int MVNDataBuffer::advanceUsedImpl(int n) {
    if (n < 0 || mUsed + n > size()) {
        return -1;
    }
    mUsed += n;
    return 0;
}

int MVNDataBuffer::advanceOffsetImpl(int n) {
    if (n >= 0 && mOffset + n <= mUsed) {
        mOffset += n;
        if (mOffset == mUsed) {
            mOffset = 0;
            mUsed = 0;
        }
        return 0;
    }
    mOffset = 0;
    mUsed = 0;
    return -1;
}

void MVNDataBuffer::adjustImpl() {
    if (mOffset == 0 || mOffset < mBlockSize) {
        return;
    }
    const int valid = mUsed - mOffset;
    if (valid > 0) {
        // Head and tail may overlap when little was pulled.
        std::memmove(ptr(), ptr() + mOffset, static_cast<size_t>(valid));
    }
    mUsed = valid;
    mOffset = 0;
}

void MVNDataBuffer::debug(const char* tag) {
    log_debug("MVNDataBuffer", "%s id(%d), used:%d, offset:%d, byteBufferSize(%d):%d", tag ? tag : "", mDataId,
              mUsed, mOffset, static_cast<int>(id()), size());
}

}  // namespace Morvane
