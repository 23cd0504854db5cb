#pragma once
#include <string>

extern "C" {
#include <libavutil/rational.h>
}

struct AVAudioFifo;
struct AVCodecContext;
struct AVFormatContext;
struct AVFrame;
struct AVOutputFormat;
struct AVPacket;
struct AVStream;
struct SwrContext;

namespace Morvane {

// The sound a join puts beside the video, read from a file rendered once for
// the whole range. Packets are copied as they are where the film's container
// takes the file's codec (AAC in .m4a); anything else (the PCM of a .wav) is
// encoded to AAC once, in one piece, so no chunk border falls inside it.
class MVNSoundSource {
public:
    MVNSoundSource() = default;
    MVNSoundSource(const MVNSoundSource&) = delete;
    MVNSoundSource& operator=(const MVNSoundSource&) = delete;
    ~MVNSoundSource();

    // Opens `path` for a film written by `format`. 0 on success.
    int open(const std::string& path, const AVOutputFormat* format);
    // Describes the film's sound stream; call before its header is written.
    void describe(AVStream* stream) const;
    // The next packet, its times in timeBase(). 0, AVERROR_EOF after the
    // last, another negative code (with error() set) when reading fails.
    int next(AVPacket* pkt);

    AVRational timeBase() const { return mTimeBase; }
    bool copies() const { return mCopy; }
    const std::string& error() const { return mError; }

private:
    int read(AVPacket* pkt);
    int fill();
    int sendFrame(int samples);

    std::string mPath;
    std::string mError;
    AVFormatContext* mInput = nullptr;
    int mStream = -1;
    bool mCopy = true;
    AVRational mTimeBase{1, 1};
    // Encoding only: decoder, converter to the encoder's planar float, the
    // samples waiting for a full encoder frame, and the encoder.
    AVCodecContext* mDecoder = nullptr;
    AVCodecContext* mEncoder = nullptr;
    SwrContext* mSwr = nullptr;
    AVAudioFifo* mFifo = nullptr;
    AVFrame* mFrame = nullptr;
    AVPacket* mInPacket = nullptr;
    long long mSamples = 0;
    bool mInputDone = false;
    bool mFlushed = false;
};

}  // namespace Morvane
