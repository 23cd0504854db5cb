#pragma once
#include <cstdint>
#include <vector>

struct AVCodecContext;
struct AVFrame;
struct SwrContext;

namespace codec {

// Turns decoded audio frames into interleaved (or plane-after-plane) samples
// of the client's format and channel count at the source's rate. Without a
// conversion the samples are copied as they are.
class AudioConverter {
public:
    AudioConverter();
    ~AudioConverter();
    AudioConverter(const AudioConverter&) = delete;
    AudioConverter& operator=(const AudioConverter&) = delete;

    // Builds a resampler when the source's format or channel count differ
    // from the target, or `force` is set. 0, or -1 when FFmpeg refuses.
    int Init(const AVCodecContext* source, int targetFormat, int targetChannels, bool force);
    void Release();

    bool Converting() const { return mSwr != nullptr; }
    // AVSampleFormat and channel count of the bytes written.
    int OutputFormat() const { return mOutFormat; }
    int OutputChannels() const { return mOutChannels; }
    int OutputSampleRate() const { return mRate; }
    // Bytes of one sample of one channel, as written.
    int BytesPerSample() const;
    // The most bytes that `frame` can give.
    int OutputBytes(const AVFrame* frame) const;
    // Writes the samples of `frame` into `out`, which holds `room` bytes.
    // Returns the bytes written, or -1.
    int Convert(const AVFrame* frame, uint8_t* out, int room);
    // Empties what the resampler still holds into a scratch frame of the
    // pool and drops it; returns the samples dropped. For a stream that ends.
    int DrainTail();

private:
    int _Build(int srcFormat, int srcChannels, const void* srcLayout, int rate);

    SwrContext* mSwr = nullptr;
    int mSrcFormat = -1;
    int mSrcChannels = 0;
    int mRate = 0;
    int mOutFormat = -1;
    int mOutChannels = 0;
    std::vector<uint8_t> mPlanar;  // staging for planar targets, reused
};

}  // namespace codec
