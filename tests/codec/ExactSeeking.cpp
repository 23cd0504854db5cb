// Seeks by position land on the very picture asked for, read from the
// picture itself, whatever the container does with its index.
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "FFmpegDecoderImpl.h"
#include "FFmpegDecoderImplAsync.h"
#include "LogCapture.h"
#include "TestMedia.h"

using codec::FFmpegDecoderImpl;
using codec::FFmpegDecoderImplAsync;
using CodecTest::FrameNumberFromLuma;
using CodecTest::MediaPath;
using CodecTest::NextPicture;
using CodecTest::Picture;
using Morvane::MVNLogLevel;

namespace {

const char* kTag = "codec::FFmpegDecoderImpl";

// Jumps of 11 frames or more both ways (seeks), steps ahead within 10
// (decoding on), the pictures just before and at key frames (every 12th).
const int kRoute[] = {40, 3, 70, 12, 13, 20, 60, 0, 24, 11, 23, 35, 36, 47, 48, 74, 5, 100, 124, 88, 59, 71};

struct SeekCase {
    const char* file;
    int frames;  // pictures in the file
};

std::string CaseName(const ::testing::TestParamInfo<SeekCase>& info) { return CodecTest::TestName(info.param.file); }

}  // namespace

class ExactSeeking : public ::testing::TestWithParam<SeekCase> {};

TEST_P(ExactSeeking, EveryRequestShowsItsOwnFrameAndPlaysOnFromThere) {
    const SeekCase& c = GetParam();
    FFmpegDecoderImplAsync decoder(MediaPath(c.file).c_str(), 0, 0, false, 0, -1, false);
    ASSERT_EQ(0, decoder.Init());
    for (int n : kRoute) {
        if (n >= c.frames)
            continue;
        Picture p = NextPicture(decoder, n / 25.0);
        ASSERT_EQ(0, p.ret) << "frame " << n;
        EXPECT_EQ(n, p.frame) << "asked for frame " << n;
        EXPECT_EQ(codec::kFrameVideo, p.kind);
        EXPECT_EQ(decoder.GetFrameBufferSize(), p.size);
        EXPECT_NEAR(n / 25.0, p.time, 1e-6) << "frame " << n;
    }
    // A fresh decoder seeks to the middle and plays on across a key frame.
    FFmpegDecoderImplAsync fresh(MediaPath(c.file).c_str(), 0, 0, false, 0, -1, false);
    ASSERT_EQ(0, fresh.Init());
    for (int n = c.frames / 2 - 1; n < std::min(c.frames, c.frames / 2 + 13); ++n)
        EXPECT_EQ(n, NextPicture(fresh, n / 25.0).frame) << "playing on, frame " << n;
}

INSTANTIATE_TEST_SUITE_P(Files, ExactSeeking,
                         ::testing::Values(SeekCase{"gop12.mp4", 125}, SeekCase{"single_key.mp4", 75},
                                           SeekCase{"bframes.mp4", 75}, SeekCase{"gop12.ts", 125},
                                           SeekCase{"noindex.mkv", 125}, SeekCase{"vfr.mp4", 75},
                                           SeekCase{"sizechange.ts", 100}),
                         CaseName);

// The plain seek lands on the key frame at or before the time; the pictures
// then follow in file order.
class KeyFrameSeek : public ::testing::TestWithParam<SeekCase> {};

TEST_P(KeyFrameSeek, NextFrameStartsAtTheKeyFrameBeforeTheTime) {
    FFmpegDecoderImpl decoder(MediaPath(GetParam().file).c_str());
    ASSERT_EQ(0, decoder.Init());
    std::vector<uint8_t> buffer(1 << 20);
    for (int n : {30, 12, 59, 5, 71}) {
        ASSERT_EQ(0, decoder.Seek(n / 25.0));
        for (int expected = n / 12 * 12; expected < n / 12 * 12 + 3; ++expected) {
            int size, kind = 0;
            double time = 0;
            do {
                size = static_cast<int>(buffer.size());
                ASSERT_EQ(0, decoder.NextFrame(buffer.data(), &size, &kind, &time));
            } while (kind != codec::kFrameVideo);
            EXPECT_EQ(expected, FrameNumberFromLuma(buffer.data(), 64, 48)) << "after a seek to frame " << n;
            EXPECT_NEAR(expected / 25.0, time, 1e-6);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Files, KeyFrameSeek,
                         ::testing::Values(SeekCase{"gop12.mp4", 125}, SeekCase{"bframes.mp4", 75},
                                           SeekCase{"noindex.mkv", 125}),
                         CaseName);

TEST(KeyFrameSeekBounds, ATimeOutsideTheClipIsRefused) {
    MorvaneTest::LogCapture log;
    FFmpegDecoderImpl decoder(MediaPath("single_key.mp4").c_str());
    ASSERT_EQ(0, decoder.Init());
    EXPECT_EQ(-1, decoder.Seek(3.5));
    EXPECT_EQ(-1, decoder.Seek(-0.1));
    EXPECT_TRUE(log.has(MVNLogLevel::Error, kTag, "error time:3.500 not in [0,3.000]"));
    EXPECT_TRUE(log.has(MVNLogLevel::Error, kTag, "error time:-0.100 not in [0,3.000]"));
}

TEST(VariableFrameRate, EarlyPicturesAreSpreadOntoTheFrameGrid) {
    MorvaneTest::LogCapture log;
    FFmpegDecoderImplAsync decoder(MediaPath("vfr.mp4").c_str(), 0, 0, false, 0, -1, false);
    ASSERT_EQ(0, decoder.Init());
    EXPECT_TRUE(decoder.IsVariableFrameRate());
    for (int n = 0; n < 75; ++n) {
        Picture p = NextPicture(decoder, -1);
        ASSERT_EQ(0, p.ret);
        EXPECT_EQ(n, p.frame);
        EXPECT_NEAR(n / 25.0, p.time, 1e-9) << "picture " << n;
    }
    EXPECT_TRUE(log.has(MVNLogLevel::Debug, kTag, "fixed video pts:110->120"));
    EXPECT_TRUE(log.has(MVNLogLevel::Debug, kTag, "fixed video pts:2830->2840"));
}

TEST(SizeChange, PicturesAfterTheChangeKeepTheOutputSize) {
    MorvaneTest::LogCapture log;
    FFmpegDecoderImplAsync decoder(MediaPath("sizechange.ts").c_str(), 0, 0, false, 0, -1, false);
    ASSERT_EQ(0, decoder.Init());
    for (int n = 45; n < 56; ++n) {
        Picture p = NextPicture(decoder, n / 25.0);
        ASSERT_EQ(0, p.ret);
        EXPECT_EQ(64 * 48 * 3 / 2, p.size);
        EXPECT_EQ(n, p.frame);
    }
    EXPECT_EQ(1, log.count(MVNLogLevel::Debug, kTag, "video frame size changed 64x48->80x60"));
}
