#include "core/MVNFrame.h"

#include <cstring>

#include "core/MVNByteBuffer.h"
#include "core/MVNByteBufferPool.h"
#include "core/MVNFramePool.h"
#include "core/MVNLog.h"
#include "core/MVNPixelUtils.h"

namespace Morvane {

namespace {
const char* kTag = "Morvane::MVNFrame";
}

MVNFrame* MVNFrame::pullFromPool(int type) { return MVNFramePool::getSingleton()->pull(type); }

MVNFrame* MVNFrame::pullFromPool(int type, int size) {
    if (size < 0) {
        log_error(kTag, "pullFromPool refused, bad size:%d", size);
        return nullptr;
    }
    MVNFrame* frame = pullFromPool(type);
    if (!frame) {
        return nullptr;
    }
    MVNByteBuffer* buffer = MVNByteBufferPool::sAlloc(size);
    if (!buffer) {
        pushBackPool(frame);
        return nullptr;
    }
    frame->setBuffer(buffer);
    frame->setSize(size);
    return frame;
}

void MVNFrame::pushBackPool(MVNFrame* frame) { MVNFramePool::getSingleton()->push(frame); }

int MVNFrame::poolFreeCount() { return MVNFramePool::getSingleton()->freeCount(); }

int MVNFrame::poolOutstandingCount() { return MVNFramePool::getSingleton()->outstandingCount(); }

int MVNFrame::poolLimit() { return MVNFramePool::getSingleton()->limit(); }

void MVNFrame::setPoolLimit(int limit) { MVNFramePool::getSingleton()->setLimit(limit); }

int MVNFrame::getImage(MVNByteBuffer** out, MVNColorType type) {
    if (!out) {
        return -1;
    }
    *out = nullptr;
    if (!mBuffer || !mBuffer->ptr() || mWidth <= 0 || mHeight <= 0) {
        log_error(kTag, "getImage failed, frame holds no pixels (%dx%d %s)", mWidth, mHeight,
                  getColorFormatName(mColorFormat));
        return -1;
    }
    const int srcBytes = getPixelsBufferSize(mWidth, mHeight, mColorFormat);
    const int dstBytes = getPixelsBufferSize(mWidth, mHeight, type);
    if (srcBytes <= 0 || dstBytes <= 0) {
        log_error(kTag, "getImage failed, unsupported conversion %s -> %s", getColorFormatName(mColorFormat),
                  getColorFormatName(type));
        return -1;
    }
    if (mBuffer->size() < srcBytes) {
        log_error(kTag, "getImage failed, buffer holds %d bytes, %dx%d %s needs %d", mBuffer->size(), mWidth,
                  mHeight, getColorFormatName(mColorFormat), srcBytes);
        return -1;
    }
    MVNByteBuffer* converted = MVNByteBufferPool::sAlloc(dstBytes);
    if (!converted) {
        return -1;
    }
    int rc = 0;
    if (type == mColorFormat) {
        std::memcpy(converted->ptr(), mBuffer->ptr(), static_cast<size_t>(dstBytes));
    } else {
        rc = convertImage(mBuffer->ptr(), mWidth, mHeight, mColorFormat, converted->ptr(), mWidth, mHeight, type);
    }
    if (rc != 0) {
        MVNByteBufferPool::sRelease(converted);
        return -1;
    }
    *out = converted;
    return 0;
}

int MVNFrame::setRttData(const std::string& name, int width, int height, MVNColorType type) {
    if (name.empty() || width < 0 || height < 0) {
        log_error(kTag, "setRttData refused, name:'%s' %dx%d", name.c_str(), width, height);
        return -1;
    }
    // A render-texture frame carries no pixels: an earlier buffer goes back.
    MVNByteBufferPool::sRelease(mBuffer);
    mBuffer = nullptr;
    mSize = 0;
    mRtt = name;
    mWidth = width;
    mHeight = height;
    mColorFormat = type;
    return 0;
}

int MVNFrame::bufferSize() const { return mBuffer ? mBuffer->bufferSize() : 0; }

void MVNFrame::reset() {
    mBuffer = nullptr;
    mType = 0;
    mSize = 0;
    mTimestamp = 0;
    mFrames = 0;
    mColorFormat = MVN_COLOR_NONE;
    mWidth = 0;
    mHeight = 0;
    mSampleFormat = MVN_SAMPLE_NONE;
    mFrequency = 0;
    mChannels = 0;
    mSamples = 0;
    mRtt.clear();
    mOrigin = nullptr;
    mGeometry = MVNRect();
    mId = 0;
}

}  // namespace Morvane
