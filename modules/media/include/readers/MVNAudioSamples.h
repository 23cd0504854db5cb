#pragma once
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

struct SwrContext;

namespace codec {
class FFmpegDecoderImplAsync;
}

namespace Morvane {

// The sound of a media file as 48 kHz stereo float samples (MVNAudioBlock),
// addressed by sample number from the clip's time 0: the decoder of codec/
// gives the file's audio in order, libswresample brings it to 48 kHz. Reads
// that follow each other go on decoding; a jump seeks. Silence stands where
// the file has no sound. One reader serves one clip from one thread.
class MVNAudioSamples {
public:
    explicit MVNAudioSamples(const std::string& path);
    ~MVNAudioSamples();
    MVNAudioSamples(const MVNAudioSamples&) = delete;
    MVNAudioSamples& operator=(const MVNAudioSamples&) = delete;

    // 0 when the file has sound to give; -1 otherwise (nothing logged above
    // debug: a video without sound is no error).
    int open();
    // Writes `count` samples (two floats each) from sample `first` into
    // `out`. 0 or -1.
    int read(int64_t first, int count, float* out);

private:
    int _seek(int64_t first);
    // Decodes one more block onto the end of mPending; false at the end.
    bool _decodeMore();

    std::string mPath;
    std::unique_ptr<codec::FFmpegDecoderImplAsync> mDecoder;
    SwrContext* mSwr = nullptr;
    int mSourceRate = 0;
    double mDuration = 0;
    std::vector<uint8_t> mBlock;  // one decoded block at the source rate
    std::vector<float> mPending;  // 48 kHz samples not handed out yet
    int64_t mPendingStart = -1;   // sample number of mPending's first, -1 before the first block
    bool mEnd = false;
};

}  // namespace Morvane
