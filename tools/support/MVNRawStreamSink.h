#pragma once
#include <vector>

#include "MVNOutputSink.h"

namespace Morvane {

// Raw R,G,B,A frames, one after another, on standard output.
class MVNRawStreamSink : public MVNOutputSink {
public:
    int open(int width, int height, int fpsNum, int fpsDen, int colorType) override;
    int write(const uint8_t* pixels, int stride) override;
    int finish() override;
    void abort() override {}

private:
    int mWidth = 0;
    int mHeight = 0;
    bool mSwap = false;  // B,G,R,A input is swapped to R,G,B,A
    std::vector<uint8_t> mRow;
};

}  // namespace Morvane
