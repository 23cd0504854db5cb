// Pixel sizes, names and swscale conversions, and still pictures to and from
// files. Pictures carry a marker pixel in one corner so that flips and
// swapped channels fail loudly.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

#include "LogCapture.h"
#include "core/MVNByteBuffer.h"
#include "core/MVNByteBufferPool.h"
#include "core/MVNFrame.h"
#include "core/MVNImage.h"
#include "core/MVNPixelUtils.h"
#include "MVNTestPaths.h"

using namespace Morvane;
using MorvaneTest::LogCapture;

namespace {

struct Bgra {
    uint8_t b, g, r, a;
};

// w x h B,G,R,A picture: every pixel `fill`, the top-left one `marker`.
std::vector<uint8_t> picture(int w, int h, Bgra fill, Bgra marker) {
    std::vector<uint8_t> px(static_cast<size_t>(w * h * 4));
    for (int i = 0; i < w * h; ++i) {
        const Bgra& c = i == 0 ? marker : fill;
        px[i * 4 + 0] = c.b;
        px[i * 4 + 1] = c.g;
        px[i * 4 + 2] = c.r;
        px[i * 4 + 3] = c.a;
    }
    return px;
}

// Largest difference of one byte between two buffers of equal length.
int maxDiff(const uint8_t* a, const uint8_t* b, size_t n) {
    int worst = 0;
    for (size_t i = 0; i < n; ++i) worst = std::max(worst, std::abs(int(a[i]) - int(b[i])));
    return worst;
}

MVNFrame* bgraFrame(const std::vector<uint8_t>& px, int w, int h) {
    MVNFrame* f = MVNFrame::pullFromPool(1, static_cast<int>(px.size()));
    std::copy(px.begin(), px.end(), f->buffer()->ptr());
    f->setColorFormat(MVN_COLOR_BGRA);
    f->setWidth(w);
    f->setHeight(h);
    return f;
}

// ---- Names and sizes ------------------------------------------------------

struct Named {
    int type;
    const char* name;
};

class ColorFormatName : public ::testing::TestWithParam<Named> {};

TEST_P(ColorFormatName, GivesTheLogText) {
    EXPECT_STREQ(GetParam().name, getColorFormatName(static_cast<MVNColorType>(GetParam().type)));
}

INSTANTIATE_TEST_SUITE_P(Types, ColorFormatName,
                         ::testing::Values(Named{28, "bgra"}, Named{10001, "rtt"}, Named{-1, "none"},
                                           Named{9999, "unknown"}));

struct Sized {
    int w, h, type;
    int bufferSize;
    int stride;
};

class PixelsSize : public ::testing::TestWithParam<Sized> {};

TEST_P(PixelsSize, IsPackedWithoutPadding) {
    const Sized& p = GetParam();
    const auto type = static_cast<MVNColorType>(p.type);
    EXPECT_EQ(p.bufferSize, getPixelsBufferSize(p.w, p.h, type)) << p.w << "x" << p.h << " " << p.type;
    EXPECT_EQ(p.stride, getPixelsStride(p.w, type)) << p.w << " " << p.type;
}

INSTANTIATE_TEST_SUITE_P(
    Types, PixelsSize,
    ::testing::Values(Sized{3, 2, 28, 24, 12},
                      Sized{3, 2, 2, 18, 9},            // rgb24: rows of 9 bytes, no padding to 4
                      Sized{4, 2, 0, 12, 4},            // yuv420p: 8 luma + 2 x 2 chroma
                      Sized{3, 3, 0, 17, 3},            // odd sizes round the chroma up
                      Sized{0, 2, 28, -1, -1}, Sized{4, 1, 9999, -1, -1}));

TEST(PixelsSize, FramesWithoutPixelsNeedNoBytes) {
    EXPECT_EQ(0, getPixelsBufferSize(1920, 1080, MVN_COLOR_RTT));
    EXPECT_EQ(0, getPixelsBufferSize(1920, 1080, MVN_COLOR_BLANK));
}

// ---- Conversions ----------------------------------------------------------

TEST(FrameGetImage, ConvertsToRgbaAndRgb24InRgbOrderAndCopiesTheSameType) {
    std::vector<uint8_t> px = picture(2, 2, {1, 2, 3, 4}, {50, 60, 70, 80});
    MVNFrame* f = bgraFrame(px, 2, 2);
    const uint8_t rgba[16] = {70, 60, 50, 80, 3, 2, 1, 4, 3, 2, 1, 4, 3, 2, 1, 4};
    const uint8_t rgb24[12] = {70, 60, 50, 3, 2, 1, 3, 2, 1, 3, 2, 1};
    for (auto target : {std::pair<MVNColorType, const uint8_t*>{MVN_COLOR_RGBA, rgba}, {MVN_COLOR_RGB24, rgb24},
                        {MVN_COLOR_BGRA, px.data()}}) {
        MVNByteBuffer* out = nullptr;
        ASSERT_EQ(0, f->getImage(&out, target.first));
        ASSERT_NE(nullptr, out);
        EXPECT_NE(f->buffer(), out) << "always a new buffer";
        const int size = getPixelsBufferSize(2, 2, target.first);
        ASSERT_EQ(size, out->size());
        EXPECT_EQ(0, maxDiff(target.second, out->ptr(), static_cast<size_t>(size))) << getColorFormatName(target.first);
        MVNByteBufferPool::sRelease(out);
    }
    MVNFrame::pushBackPool(f);
}

TEST(FrameGetImage, FrameWithoutPixelsOrWithUnknownTargetFails) {
    LogCapture log;
    MVNFrame* rtt = MVNFrame::pullFromPool(1);
    rtt->setRttData("FilterRtt_1", 16, 16, MVN_COLOR_RTT);
    MVNByteBuffer* out = reinterpret_cast<MVNByteBuffer*>(0x1);
    EXPECT_EQ(-1, rtt->getImage(&out, MVN_COLOR_BGRA));
    EXPECT_EQ(nullptr, out);
    EXPECT_EQ(-1, rtt->getImage(nullptr, MVN_COLOR_BGRA));
    MVNFrame::pushBackPool(rtt);

    std::vector<uint8_t> px = picture(2, 2, {1, 2, 3, 4}, {5, 6, 7, 8});
    MVNFrame* f = bgraFrame(px, 2, 2);
    const int buffersBefore = MVNByteBufferPool::getSingleton()->outstandingCount();
    EXPECT_EQ(-1, f->getImage(&out, static_cast<MVNColorType>(9999)));
    EXPECT_EQ(-1, f->getImage(&out, MVN_COLOR_RTT));
    EXPECT_EQ(buffersBefore, MVNByteBufferPool::getSingleton()->outstandingCount());
    // A buffer shorter than the picture is refused rather than over-read.
    f->setWidth(64);
    EXPECT_EQ(-1, f->getImage(&out, MVN_COLOR_RGBA));
    EXPECT_EQ(1, log.count(MVNLogLevel::Error, "Morvane::MVNFrame",
                           "getImage failed, buffer holds 16 bytes, 64x2 bgra needs 512"));
    MVNFrame::pushBackPool(f);
}

TEST(ScaleImage2, SameSizeIsTheIdentity) {
    std::vector<uint8_t> px = picture(5, 4, {12, 34, 56, 78}, {255, 0, 128, 255});
    px[(3 * 5 + 4) * 4 + 1] = 99;  // bottom-right green differs too
    std::vector<uint8_t> out(px.size(), 0xEE);
    ASSERT_EQ(0, scaleImage2(px.data(), 5, 4, MVN_COLOR_BGRA, out.data(), 5, 4));
    EXPECT_EQ(0, maxDiff(px.data(), out.data(), px.size()));
}

TEST(ScaleImage2, HalvingKeepsLeftAndRightHalvesApart) {
    // 16 x 4: left half blue, right half red. Halved to 8 x 2, the outer
    // columns lie far from the seam and keep their colours.
    std::vector<uint8_t> px(16 * 4 * 4);
    for (int i = 0; i < 16 * 4; ++i) {
        const bool left = i % 16 < 8;
        px[i * 4 + 0] = left ? 255 : 0;
        px[i * 4 + 2] = left ? 0 : 255;
        px[i * 4 + 3] = 255;
    }
    std::vector<uint8_t> out(8 * 2 * 4);
    ASSERT_EQ(0, scaleImage2(px.data(), 16, 4, MVN_COLOR_BGRA, out.data(), 8, 2));
    for (int y = 0; y < 2; ++y) {
        for (int x : {0, 1, 2, 5, 6, 7}) {
            const uint8_t* p = &out[(y * 8 + x) * 4];
            EXPECT_NEAR(p[0], x < 4 ? 255 : 0, 1) << x << "," << y;
            EXPECT_NEAR(p[2], x < 4 ? 0 : 255, 1) << x << "," << y;
        }
    }
}

struct BadScale {
    bool nullSrc, nullDst;
    int srcW, srcH, type, dstW, dstH;
};

class ScaleImage2Refuses : public ::testing::TestWithParam<BadScale> {};

TEST_P(ScaleImage2Refuses, BadArgumentsGiveMinusOneWithoutTouchingDst) {
    const BadScale& p = GetParam();
    std::vector<uint8_t> src(64 * 64 * 4, 7);
    std::vector<uint8_t> dst(64 * 64 * 4, 0xEE);
    EXPECT_EQ(-1, scaleImage2(p.nullSrc ? nullptr : src.data(), p.srcW, p.srcH, static_cast<MVNColorType>(p.type),
                              p.nullDst ? nullptr : dst.data(), p.dstW, p.dstH));
    EXPECT_EQ(0xEE, dst[0]);
}

INSTANTIATE_TEST_SUITE_P(Arguments, ScaleImage2Refuses,
                         ::testing::Values(BadScale{true, false, 4, 4, 28, 4, 4}, BadScale{false, true, 4, 4, 28, 4, 4},
                                           BadScale{false, false, 0, 4, 28, 4, 4}, BadScale{false, false, 4, 4, 28, 4, -2},
                                           BadScale{false, false, 4, 4, 10001, 4, 4},
                                           BadScale{false, false, 4, 4, 9999, 4, 4}));

// ---- Image files ----------------------------------------------------------

std::string workFile(const char* name) {
    const char* dir = std::getenv("MVN_TEST_WORKDIR");
    return std::string(dir ? dir : ".") + "/" + name;
}

TEST(Image, PngRoundTripKeepsEveryByte) {
    // Every pixel differs, alpha included, so any swap or flip shows.
    const int w = 5, h = 3;
    std::vector<uint8_t> px(w * h * 4);
    for (int i = 0; i < w * h; ++i) {
        px[i * 4 + 0] = static_cast<uint8_t>(i * 16);
        px[i * 4 + 1] = static_cast<uint8_t>(255 - i * 7);
        px[i * 4 + 2] = static_cast<uint8_t>(i * 3 + 1);
        px[i * 4 + 3] = static_cast<uint8_t>(100 + i * 10);
    }
    const std::string path = workFile("roundtrip.png");
    ASSERT_EQ(0, MVNImage::saveToFile(path, px.data(), w, h));
    MVNFrame* f = MVNImage::loadFromFile(path, 0, 0);
    ASSERT_NE(nullptr, f);
    EXPECT_EQ(MVN_COLOR_BGRA, f->colorFormat());
    EXPECT_EQ(w, f->width());
    EXPECT_EQ(h, f->height());
    EXPECT_EQ(1, f->type());
    EXPECT_EQ(0, maxDiff(px.data(), f->buffer()->ptr(), px.size()));
    MVNFrame::pushBackPool(f);
}

TEST(Image, LoadScalesToTheAskedSizeAndOneGivenSideKeepsTheFilesAspect) {
    std::vector<uint8_t> px = picture(8, 4, {30, 60, 90, 255}, {30, 60, 90, 255});
    const std::string path = workFile("uniform.png");
    ASSERT_EQ(0, MVNImage::saveToFile(path, px.data(), 8, 4));
    MVNFrame* f = MVNImage::loadFromFile(path, 20, 6);
    ASSERT_NE(nullptr, f);
    std::vector<uint8_t> expected = picture(20, 6, {30, 60, 90, 255}, {30, 60, 90, 255});
    ASSERT_EQ(20 * 6 * 4, f->size());
    EXPECT_LE(maxDiff(expected.data(), f->buffer()->ptr(), expected.size()), 1);
    MVNFrame::pushBackPool(f);
    for (auto asked : {std::pair<int, int>{16, 0}, {-1, 2}}) {
        f = MVNImage::loadFromFile(path, asked.first, asked.second);
        ASSERT_NE(nullptr, f);
        EXPECT_EQ(f->width(), 2 * f->height()) << asked.first << "x" << asked.second;
        EXPECT_EQ(f->width(), asked.first > 0 ? asked.first : 2 * asked.second);
        MVNFrame::pushBackPool(f);
    }
}

// A JPEG decodes to full-range YUV; read as video range its blue would come
// out near 220 instead of 204.
TEST(Image, JpegIsDecodedWithItsFullRange) {
    MVNFrame* f = MVNImage::loadFromFile(std::string(MVN_TEST_DATA_DIR) + "/host/blue-32x16.jpg", 0, 0);
    ASSERT_NE(nullptr, f);
    EXPECT_EQ(32, f->width());
    EXPECT_EQ(16, f->height());
    EXPECT_EQ(MVN_COLOR_BGRA, f->colorFormat());
    std::vector<uint8_t> expected = picture(32, 16, {204, 102, 51, 255}, {204, 102, 51, 255});
    EXPECT_LE(maxDiff(expected.data(), f->buffer()->ptr(), expected.size()), 4);  // JPEG is lossy
    MVNFrame::pushBackPool(f);
}

TEST(Image, MissingFileGivesNullAndLogsWhy) {
    LogCapture log;
    const std::string path = workFile("no-such-picture.png");
    EXPECT_EQ(nullptr, MVNImage::loadFromFile(path, 0, 0));
    EXPECT_TRUE(log.has(MVNLogLevel::Error, "Morvane::MVNImage",
                        "loadFromFile " + path + " failed, open error: No such file or directory"));
}

TEST(Image, UndecodableFileGivesNullAndLogsUnderItsTag) {
    const std::string path = workFile("garbage.png");
    {
        std::ofstream out(path, std::ios::binary);
        out << "this is not a picture at all, only text that fills a few bytes";
    }
    LogCapture log;
    const int framesBefore = MVNFrame::poolOutstandingCount();
    EXPECT_EQ(nullptr, MVNImage::loadFromFile(path, 0, 0));
    EXPECT_EQ(framesBefore, MVNFrame::poolOutstandingCount());
    const auto lines = log.lines();
    EXPECT_TRUE(std::any_of(lines.begin(), lines.end(), [&](const auto& l) {
        return l.level == MVNLogLevel::Error && l.tag == "Morvane::MVNImage" && l.message.find(path) != std::string::npos;
    }));
}

TEST(Image, SaveRefusesBadArguments) {
    uint8_t px[4] = {1, 2, 3, 4};
    EXPECT_EQ(-1, MVNImage::saveToFile("", px, 1, 1));
    EXPECT_EQ(-1, MVNImage::saveToFile(workFile("x.png"), nullptr, 1, 1));
    EXPECT_EQ(-1, MVNImage::saveToFile(workFile("x.png"), px, 0, 1));
    EXPECT_EQ(-1, MVNImage::saveToFile(workFile("no-dir/x.png"), px, 1, 1));
    EXPECT_EQ(nullptr, MVNImage::loadFromFile("", 0, 0));
}

}  // namespace
