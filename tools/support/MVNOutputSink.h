#pragma once
#include <cstdint>
#include <memory>
#include <string>

namespace Morvane {

// Where mvn-render puts the frames it collects: a video file, a numbered
// picture sequence or raw RGBA on standard output. A sink that fails keeps
// its error text; abort() removes whatever was half written.
class MVNOutputSink {
public:
    virtual ~MVNOutputSink() = default;

    // `colorType` is the layout of the frames handed to write(): 26 (R,G,B,A)
    // or 28 (B,G,R,A). 0 on success.
    virtual int open(int width, int height, int fpsNum, int fpsDen, int colorType) = 0;
    // One frame of width * height pixels, `stride` bytes a row. 0 on success.
    virtual int write(const uint8_t* pixels, int stride) = 0;
    // Completes the output (trailer, rename into place). 0 on success.
    virtual int finish() = 0;
    // Removes what was written so far; nothing half written stays behind.
    virtual void abort() = 0;

    // Sound beside the pictures, for sinks that keep it (video files): asked
    // for before open, then fed with writeSound as it comes, interleaved
    // floats of `channels` at `rate`. Pictures and sound each come in order;
    // the sink keeps them in step by their own counts. Sinks without sound
    // (pictures, raw frames) answer false and ignore what they are given.
    virtual bool keepsSound() const { return false; }
    virtual void enableSound(int rate, int channels) {}
    // 0 on success.
    virtual int writeSound(const float* samples, int count) { return 0; }

    const std::string& error() const { return mError; }

    // Picks the sink for an output name: "-" raw on stdout, a printf-style
    // "%d" pattern a picture sequence numbered from `firstNumber`,
    // ".mp4"/".mkv" a video file. Null with
    // `error` set for anything else.
    static std::unique_ptr<MVNOutputSink> create(const std::string& output, int firstNumber, std::string& error);

protected:
    std::string mError;
};

}  // namespace Morvane
