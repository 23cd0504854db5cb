#pragma once
#include <string>

#include "core/MVNColorType.h"
#include "core/MVNRect.h"

namespace Morvane {

class MVNByteBuffer;

enum MVNAudioSampleFormat : int { MVN_SAMPLE_NONE = -1, MVN_SAMPLE_S16 = 1, MVN_SAMPLE_FLT = 3, MVN_SAMPLE_FLTP = 8 };

// A picture, a render-texture reference or audio samples, passed by pointer
// between services and threads. Frames come from the pool (pullFromPool)
// and whoever holds one at the end of its way gives it back (pushBackPool).
class MVNFrame {
public:
    static MVNFrame* pullFromPool(int type);
    // A frame with a buffer of at least `size` bytes; null on failure.
    static MVNFrame* pullFromPool(int type, int size);
    // Returns the frame and its buffer to their pools. Null is ignored.
    static void pushBackPool(MVNFrame* frame);
    // Frames waiting in the pool; frames handed out and not returned.
    static int poolFreeCount();
    static int poolOutstandingCount();
    // Frames that may be out at once (MVNFramePool); pulls beyond it give
    // null until frames come back.
    static int poolLimit();
    static void setPoolLimit(int limit);

    // Converts the pixels to `type` into a new pooled buffer (the caller
    // releases it to MVNByteBufferPool). 0 on success, -1 otherwise.
    int getImage(MVNByteBuffer** out, MVNColorType type);
    // Turns the frame into a reference to the render texture `name`.
    int setRttData(const std::string& name, int width, int height, MVNColorType type);
    int bufferSize() const;

    MVNByteBuffer* buffer() const { return mBuffer; }
    void setBuffer(MVNByteBuffer* b) { mBuffer = b; }
    int type() const { return mType; }
    void setType(int t) { mType = t; }
    int size() const { return mSize; }
    void setSize(int s) { mSize = s; }
    double timestamp() const { return mTimestamp; }
    void setTimestamp(double t) { mTimestamp = t; }
    int frames() const { return mFrames; }
    void setFrames(int f) { mFrames = f; }
    MVNColorType colorFormat() const { return mColorFormat; }
    void setColorFormat(MVNColorType c) { mColorFormat = c; }
    int width() const { return mWidth; }
    void setWidth(int w) { mWidth = w; }
    int height() const { return mHeight; }
    void setHeight(int h) { mHeight = h; }
    MVNAudioSampleFormat sampleFormat() const { return mSampleFormat; }
    void setSampleFormat(MVNAudioSampleFormat f) { mSampleFormat = f; }
    int frequency() const { return mFrequency; }
    void setFrequency(int f) { mFrequency = f; }
    int channels() const { return mChannels; }
    void setChannels(int c) { mChannels = c; }
    int samples() const { return mSamples; }
    void setSamples(int s) { mSamples = s; }
    const std::string& rtt() const { return mRtt; }
    void setRtt(const std::string& r) { mRtt = r; }
    MVNFrame* origin() const { return mOrigin; }
    void setOrigin(MVNFrame* o) { mOrigin = o; }
    const MVNRect& geometry() const { return mGeometry; }
    void setGeometry(const MVNRect& g) { mGeometry = g; }
    int id() const { return mId; }
    void setId(int i) { mId = i; }

    // Clears every field for reuse (the buffer pointer included).
    void reset();

private:
    MVNFrame() = default;
    ~MVNFrame() = default;
    friend class MVNFramePool;

    MVNByteBuffer* mBuffer = nullptr;
    int mType = 0;
    int mSize = 0;
    double mTimestamp = 0;
    int mFrames = 0;
    MVNColorType mColorFormat = MVN_COLOR_NONE;
    int mWidth = 0;
    int mHeight = 0;
    MVNAudioSampleFormat mSampleFormat = MVN_SAMPLE_NONE;
    int mFrequency = 0;
    int mChannels = 0;
    int mSamples = 0;
    std::string mRtt;
    MVNFrame* mOrigin = nullptr;
    MVNRect mGeometry;
    int mId = 0;
};

}  // namespace Morvane
