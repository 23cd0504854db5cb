// The picture copy turns pictures of another size or format (10-bit surfaces
// moved out of a hardware decoder, a stream that changes size) into the
// output the client was told about.
#include <gtest/gtest.h>

#include <vector>

#include "LogCapture.h"
#include "PictureOutput.h"

extern "C" {
#include <libavutil/frame.h>
#include <libavutil/pixfmt.h>
}

using codec::PictureOutput;

namespace {

// A frame of one flat colour; `shift` places 10-bit samples in 16-bit words.
AVFrame* FlatFrame(AVPixelFormat format, int width, int height, int luma, int chroma, int shift) {
    AVFrame* f = av_frame_alloc();
    f->format = format;
    f->width = width;
    f->height = height;
    av_frame_get_buffer(f, 0);
    const bool wide = format == AV_PIX_FMT_P010LE;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            if (wide)
                reinterpret_cast<uint16_t*>(f->data[0] + y * f->linesize[0])[x] = static_cast<uint16_t>(luma << shift);
            else
                f->data[0][y * f->linesize[0] + x] = static_cast<uint8_t>(luma);
        }
    // Both formats here interleave U and V in a half-height second plane.
    for (int y = 0; y < height / 2; ++y)
        for (int x = 0; x < width; ++x) {
            if (wide)
                reinterpret_cast<uint16_t*>(f->data[1] + y * f->linesize[1])[x] = static_cast<uint16_t>(chroma << shift);
            else
                f->data[1][y * f->linesize[1] + x] = static_cast<uint8_t>(chroma);
        }
    return f;
}

}  // namespace

TEST(PictureOutputConversion, TenBitPicturesBecomeEightBitOutput) {
    PictureOutput out;
    ASSERT_EQ(0, out.Configure(64, 48, AV_PIX_FMT_NV12, 64, 48));
    ASSERT_EQ(64 * 48 * 3 / 2, out.BufferSize());
    // 10-bit luma 640 and chroma 512 are 8-bit 160 and 128.
    AVFrame* frame = FlatFrame(AV_PIX_FMT_P010LE, 64, 48, 640, 512, 6);
    std::vector<uint8_t> data(static_cast<size_t>(out.BufferSize()), 0);
    int size = static_cast<int>(data.size());
    ASSERT_EQ(0, out.Copy(frame, data.data(), &size));
    EXPECT_EQ(out.BufferSize(), size);
    EXPECT_NEAR(160, data[24 * 64 + 32], 1);
    EXPECT_NEAR(128, data[64 * 48 + 12 * 64 + 32], 1);
    av_frame_free(&frame);
}

TEST(PictureOutputConversion, ALargerPictureIsScaledIntoTheOutputOnceLogged) {
    MorvaneTest::LogCapture log;
    PictureOutput out;
    ASSERT_EQ(0, out.Configure(64, 48, AV_PIX_FMT_NV12, 64, 48));
    AVFrame* big = FlatFrame(AV_PIX_FMT_NV12, 80, 60, 200, 128, 0);
    std::vector<uint8_t> data(static_cast<size_t>(out.BufferSize()));
    for (int i = 0; i < 3; ++i) {
        int size = static_cast<int>(data.size());
        ASSERT_EQ(0, out.Copy(big, data.data(), &size));
        EXPECT_EQ(200, data[24 * 64 + 32]);
    }
    EXPECT_EQ(1, log.count(Morvane::MVNLogLevel::Debug, "codec::FFmpegDecoderImpl",
                           "video frame size changed 64x48->80x60"));
    av_frame_free(&big);
}

TEST(PictureOutputConversion, ATooSmallBufferIsRefused) {
    MorvaneTest::LogCapture log;
    PictureOutput out;
    ASSERT_EQ(0, out.Configure(64, 48, AV_PIX_FMT_NV12, 32, 24));
    EXPECT_TRUE(out.Scaling());
    AVFrame* frame = FlatFrame(AV_PIX_FMT_NV12, 64, 48, 100, 128, 0);
    std::vector<uint8_t> data(100);
    int size = 100;
    EXPECT_EQ(-1, out.Copy(frame, data.data(), &size));
    EXPECT_TRUE(log.has(Morvane::MVNLogLevel::Error, "codec::FFmpegDecoderImpl", "out buffer too small 100<1152"));
    av_frame_free(&frame);
}
