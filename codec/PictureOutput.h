#pragma once
#include <cstdint>

struct AVFrame;
struct SwsContext;

namespace codec {

// Copies decoded pictures into a client's buffer as packed planes at the
// output size and pixel format: a straight copy, a scale, or, for pictures
// whose size or format changed mid-stream, a conversion of their own. Frames
// in device memory are moved to main memory first.
class PictureOutput {
public:
    PictureOutput();
    ~PictureOutput();
    PictureOutput(const PictureOutput&) = delete;
    PictureOutput& operator=(const PictureOutput&) = delete;

    // The stream's picture size, the pixel format handed out and the output
    // size. 0, or -1 when FFmpeg refuses.
    int Configure(int sourceWidth, int sourceHeight, int format, int outputWidth, int outputHeight);
    void Release();

    // Bytes of one output picture.
    int BufferSize() const { return mBufferSize; }
    bool Scaling() const { return mScaler != nullptr; }
    // Writes the picture to `data`; `*size` holds the capacity on entry and
    // the bytes written on return. 0, or -1.
    int Copy(AVFrame* frame, uint8_t* data, int* size);

private:
    // A frame in device memory, moved to main memory; null on failure.
    AVFrame* _Transfer(AVFrame* frame);

    int mSourceWidth = 0;
    int mSourceHeight = 0;
    int mFormat = -1;
    int mWidth = 0;
    int mHeight = 0;
    int mBufferSize = 0;
    SwsContext* mScaler = nullptr;   // source size to output size, when they differ
    SwsContext* mChanged = nullptr;  // for pictures whose size or format differ from the stream's
    int mChangedWidth = 0;           // size of the last change logged, 0 while none
    int mChangedHeight = 0;
    AVFrame* mSoftware = nullptr;    // target of transfers from device memory
};

}  // namespace codec
