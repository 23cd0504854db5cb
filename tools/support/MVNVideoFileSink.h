#pragma once
#include <string>
#include <vector>

#include "MVNOutputSink.h"

struct AVFormatContext;
struct AVCodecContext;
struct AVStream;
struct AVFrame;
struct AVPacket;
struct SwsContext;

namespace Morvane {

// H.264 in an MP4 or Matroska file through libavformat and libavcodec, with
// AAC sound when enableSound was called. The
// file is written under a temporary name and renamed into place by finish(),
// so an interrupted render never leaves a file that looks complete.
class MVNVideoFileSink : public MVNOutputSink {
public:
    explicit MVNVideoFileSink(const std::string& path);
    ~MVNVideoFileSink() override;

    // Frames from one key frame to the next: chunked renders cut on it.
    static constexpr int kKeyFrameInterval = 50;
    // Container tags written with the header; call before open().
    void setTags(std::vector<std::pair<std::string, std::string>> tags) { mTags = std::move(tags); }

    int open(int width, int height, int fpsNum, int fpsDen, int colorType) override;
    int write(const uint8_t* pixels, int stride) override;
    int finish() override;
    void abort() override;
    bool keepsSound() const override { return true; }
    void enableSound(int rate, int channels) override;
    int writeSound(const float* samples, int count) override;

private:
    int encode(AVFrame* frame);
    int openSound();
    // Encodes the queued sound in whole encoder frames; at the end (`last`)
    // the rest too.
    int encodeSound(bool last);
    int writePackets(AVCodecContext* codec, AVStream* stream);
    void close();

    std::string mPath;
    std::string mTempPath;
    AVFormatContext* mFormat = nullptr;
    AVCodecContext* mCodec = nullptr;
    AVStream* mStream = nullptr;
    AVFrame* mFrame = nullptr;
    AVPacket* mPacket = nullptr;
    SwsContext* mSws = nullptr;
    std::vector<std::pair<std::string, std::string>> mTags;
    int mWidth = 0;
    int mHeight = 0;
    int mSrcFormat = 0;
    long long mPts = 0;
    // Sound: AAC of what writeSound queued, pts counted in samples.
    int mSoundRate = 0;
    int mSoundChannels = 0;
    AVCodecContext* mSoundCodec = nullptr;
    AVStream* mSoundStream = nullptr;
    AVFrame* mSoundFrame = nullptr;
    std::vector<float> mSoundQueue;  // interleaved, not yet encoded
    long long mSoundPts = 0;
};

}  // namespace Morvane
