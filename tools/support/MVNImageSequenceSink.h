#pragma once
#include <string>
#include <vector>

#include "MVNOutputSink.h"

struct AVCodecContext;
struct AVFrame;
struct AVPacket;
struct SwsContext;

namespace Morvane {

// One PNG per frame, named by a printf-style pattern ("out/f%05d.png") and
// the frame's position. Each picture is written under a temporary name and
// renamed when complete; abort() removes the pictures of this run.
class MVNImageSequenceSink : public MVNOutputSink {
public:
    MVNImageSequenceSink(const std::string& pattern, int firstNumber);
    ~MVNImageSequenceSink() override;

    int open(int width, int height, int fpsNum, int fpsDen, int colorType) override;
    int write(const uint8_t* pixels, int stride) override;
    int finish() override;
    void abort() override;

    // The file name for frame `number`; empty when the pattern is not a
    // single integer conversion.
    static std::string fileName(const std::string& pattern, int number);

private:
    void close();

    std::string mPattern;
    int mNumber;
    std::vector<std::string> mWritten;
    AVCodecContext* mCodec = nullptr;
    AVFrame* mFrame = nullptr;
    AVPacket* mPacket = nullptr;
    SwsContext* mSws = nullptr;
    int mWidth = 0;
    int mHeight = 0;
};

}  // namespace Morvane
