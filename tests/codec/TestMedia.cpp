#include "TestMedia.h"

#include "FFmpegDecoder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <mutex>
#include <sys/wait.h>
#include "MVNTestPaths.h"

namespace CodecTest {

namespace {

std::string MediaDir() { return std::string(MVN_BINARY_DIR) + "/test-media/codec"; }

// Mean of a square block of one channel; `stride` bytes between pixels.
double BlockMean(const uint8_t* plane, int width, int height, int cx, int cy, int stride) {
    const int r = std::max(1, std::min(width, height) / 8);
    double sum = 0;
    int n = 0;
    for (int y = cy - r; y < cy + r; ++y)
        for (int x = cx - r; x < cx + r; ++x) {
            if (x < 0 || y < 0 || x >= width || y >= height)
                continue;
            sum += plane[(static_cast<size_t>(y) * width + x) * stride];
            ++n;
        }
    return n ? sum / n : 0;
}

// One digit of the number: luma 16 + 12 * digit, off by at most 4.
int Digit(double luma) {
    const double d = (luma - 16) / 12;
    const int rounded = static_cast<int>(std::lround(d));
    if (rounded < 0 || rounded > 15 || std::fabs(d - rounded) > 0.35)
        return -1;
    return rounded;
}

int FromHalves(double left, double right) {
    const int hi = Digit(left);
    const int lo = Digit(right);
    return hi < 0 || lo < 0 ? -1 : hi * 16 + lo;
}

}  // namespace

std::string MediaPath(const std::string& name) {
    static std::once_flag once;
    static int status = 0;
    std::call_once(once, [] {
        const std::string script = std::string(MVN_SOURCE_DIR) + "/tests/codec/make-media.sh";
        status = RunCommand("sh '" + script + "' '" + MediaDir() + "'");
    });
    EXPECT_EQ(0, status) << "make-media.sh failed";
    return MediaDir() + "/" + name;
}

std::string TestName(std::string file) {
    for (char& ch : file)
        if (!isalnum(static_cast<unsigned char>(ch)))
            ch = '_';
    return file;
}

int FrameNumberFromLuma(const uint8_t* luma, int width, int height) {
    return FromHalves(BlockMean(luma, width, height, width / 4, height / 2, 1),
                      BlockMean(luma, width, height, 3 * width / 4, height / 2, 1));
}

int FrameNumberFromBgra(const uint8_t* bgra, int width, int height) {
    // Grey: B = G = R = (Y - 16) * 255 / 219.
    auto luma = [](double b) { return b * 219.0 / 255.0 + 16; };
    return FromHalves(luma(BlockMean(bgra, width, height, width / 4, height / 2, 4)),
                      luma(BlockMean(bgra, width, height, 3 * width / 4, height / 2, 4)));
}

Picture NextPicture(codec::FFmpegDecoder& decoder, double time) {
    // Room for the largest test picture even while the decoder is closed.
    std::vector<uint8_t> data(static_cast<size_t>(std::max(decoder.GetFrameBufferSize(), 80 * 60 * 2)));
    Picture p;
    p.size = static_cast<int>(data.size());
    p.ret = decoder.NextVideo(time, data.data(), &p.size, &p.kind, &p.time);
    if (p.ret == 0)
        p.frame = FrameNumberFromLuma(data.data(), decoder.GetOutputWidth(), decoder.GetOutputHeight());
    return p;
}

int RunCommand(const std::string& command, std::string* output) {
    FILE* pipe = ::popen(command.c_str(), "r");
    if (!pipe)
        return -1;
    char buffer[4096];
    size_t n;
    while ((n = std::fread(buffer, 1, sizeof buffer, pipe)) > 0)
        if (output)
            output->append(buffer, n);
    int status = ::pclose(pipe);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

void WriteText(const std::string& path, const std::string& content) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out << content;
}

}  // namespace CodecTest
