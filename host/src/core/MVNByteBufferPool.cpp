#include "core/MVNByteBufferPool.h"

#include <algorithm>
#include <new>

#include "core/AutoLock.h"
#include "core/MVNByteBuffer.h"
#include "core/MVNLog.h"

namespace Morvane {

namespace {
const char* kTag = "Morvane::MVNByteBufferPool";
}

MVNByteBufferPool* MVNByteBufferPool::getSingleton() {
    // Never destroyed: buffers may come back from other threads and static
    // destructors while the process ends.
    static MVNByteBufferPool* instance = new MVNByteBufferPool;
    return instance;
}

MVNByteBuffer* MVNByteBufferPool::sAlloc(int size) { return getSingleton()->alloc(size); }

void MVNByteBufferPool::sRelease(MVNByteBuffer* buffer) {
    if (buffer) {
        getSingleton()->release(buffer);
    }
}

MVNByteBuffer* MVNByteBufferPool::alloc(int size) {
    if (size < 0) {
        log_error(kTag, "alloc refused, bad size:%d", size);
        return nullptr;
    }
    {
        AutoLock guard(mLock);
        // Best fit: the smallest free buffer that holds the request, so that
        // big buffers stay for big pictures.
        auto best = mFree.end();
        for (auto it = mFree.begin(); it != mFree.end(); ++it) {
            if ((*it)->bufferSize() >= size && (best == mFree.end() || (*it)->bufferSize() < (*best)->bufferSize())) {
                best = it;
            }
        }
        if (best != mFree.end()) {
            MVNByteBuffer* buffer = *best;
            mFree.erase(best);
            mFreeBytes -= buffer->bufferSize();
            buffer->resize(size);  // within the storage: cannot fail
            mOutstanding[buffer] = buffer->bufferSize();
            return buffer;
        }
    }
    // Allocate outside the lock: a large allocation must not stall others.
    MVNByteBuffer* buffer = new (std::nothrow) MVNByteBuffer();
    if (!buffer || buffer->resize(size) != 0) {
        delete buffer;
        log_error(kTag, "alloc failed, out of memory for %d bytes", size);
        return nullptr;
    }
    AutoLock guard(mLock);
    mTotal += buffer->bufferSize();
    mOutstanding[buffer] = buffer->bufferSize();
    return buffer;
}

void MVNByteBufferPool::release(MVNByteBuffer* buffer) {
    if (!buffer) {
        return;
    }
    AutoLock guard(mLock);
    auto it = mOutstanding.find(buffer);
    if (it == mOutstanding.end()) {
        if (std::find(mFree.begin(), mFree.end(), buffer) != mFree.end()) {
            log_error(kTag, "release of a buffer already released, id:%u", buffer->id());
        } else {
            log_error(kTag, "release of a buffer not made by the pool, id:%u", buffer->id());
        }
        return;
    }
    // The holder may have grown the buffer since it was handed out.
    mTotal += buffer->bufferSize() - it->second;
    mOutstanding.erase(it);
    mFree.push_back(buffer);
    mFreeBytes += buffer->bufferSize();
    evictLocked();
}

void MVNByteBufferPool::evictLocked() {
    while (!mFree.empty() && (static_cast<int>(mFree.size()) > kMaxFreeBuffers || mFreeBytes > kMaxFreeBytes)) {
        MVNByteBuffer* oldest = mFree.front();
        mFree.pop_front();
        mFreeBytes -= oldest->bufferSize();
        mTotal -= oldest->bufferSize();
        delete oldest;
    }
}

int64_t MVNByteBufferPool::total() {
    AutoLock guard(mLock);
    return mTotal;
}

int MVNByteBufferPool::freeCount() {
    AutoLock guard(mLock);
    return static_cast<int>(mFree.size());
}

int MVNByteBufferPool::outstandingCount() {
    AutoLock guard(mLock);
    return static_cast<int>(mOutstanding.size());
}

void MVNByteBufferPool::trim() {
    AutoLock guard(mLock);
    for (MVNByteBuffer* buffer : mFree) {
        mTotal -= buffer->bufferSize();
        delete buffer;
    }
    mFree.clear();
    mFreeBytes = 0;
}

}  // namespace Morvane
