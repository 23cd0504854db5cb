#pragma once
#include <string>

#include "MVNOutputSink.h"

struct AVFormatContext;
struct AVCodecContext;
struct AVStream;
struct AVFrame;
struct AVPacket;
struct SwsContext;

namespace Morvane {

// H.264 in an MP4 or Matroska file through libavformat and libavcodec. The
// file is written under a temporary name and renamed into place by finish(),
// so an interrupted render never leaves a file that looks complete.
class MVNVideoFileSink : public MVNOutputSink {
public:
    explicit MVNVideoFileSink(const std::string& path);
    ~MVNVideoFileSink() override;

    int open(int width, int height, int fpsNum, int fpsDen, int colorType) override;
    int write(const uint8_t* pixels, int stride) override;
    int finish() override;
    void abort() override;

private:
    int encode(AVFrame* frame);
    void close();

    std::string mPath;
    std::string mTempPath;
    AVFormatContext* mFormat = nullptr;
    AVCodecContext* mCodec = nullptr;
    AVStream* mStream = nullptr;
    AVFrame* mFrame = nullptr;
    AVPacket* mPacket = nullptr;
    SwsContext* mSws = nullptr;
    int mWidth = 0;
    int mHeight = 0;
    int mSrcFormat = 0;
    long long mPts = 0;
};

}  // namespace Morvane
