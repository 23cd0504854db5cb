// Opening: what GetMediaInfo tells for each kind of file, the exact
// complaints for files that are not media, and the output size: square
// pixels pass through, non-square pixels stretch the shorter side, limits
// fit the display shape, every changed side is even.
#include <gtest/gtest.h>

#include <memory>

#include "FFmpegDecoderImpl.h"
#include "FFmpegDecoderImplAsync.h"
#include "LogCapture.h"
#include "OutputSize.h"
#include "TestMedia.h"

extern "C" {
#include <libavutil/pixfmt.h>
#include <libavutil/samplefmt.h>
}

using codec::FFmpegDecoderImpl;
using codec::FFmpegDecoderImplAsync;
using codec::MediaInfo;
using CodecTest::MediaPath;
using Morvane::MVNLogLevel;
using MorvaneTest::LogCapture;

namespace {
const char* kTag = "codec::FFmpegDecoderImpl";
}

struct OpenCase {
    const char* file;
    bool video, audio;
    int width, height, outWidth, outHeight;
    float fps;
    double rotation;
    int channels, sampleRate;
    double duration;
};

class DecoderOpening : public ::testing::TestWithParam<OpenCase> {};

TEST_P(DecoderOpening, TellsTheStreamsOfTheFile) {
    const OpenCase& c = GetParam();
    FFmpegDecoderImplAsync decoder(MediaPath(c.file).c_str(), 0, 0, false, 0, -1, false);
    ASSERT_EQ(0, decoder.Init());
    MediaInfo info;
    ASSERT_EQ(0, decoder.GetMediaInfo(&info));
    EXPECT_EQ(c.video, info.has_video);
    EXPECT_EQ(c.audio, info.has_audio);
    EXPECT_EQ(c.width, info.width);
    EXPECT_EQ(c.height, info.height);
    EXPECT_EQ(c.outWidth, decoder.GetOutputWidth());
    EXPECT_EQ(c.outHeight, decoder.GetOutputHeight());
    EXPECT_FLOAT_EQ(c.fps, info.fps);
    EXPECT_DOUBLE_EQ(c.rotation, info.rotation);
    EXPECT_EQ(c.channels, info.channels);
    EXPECT_EQ(c.sampleRate, info.sample_rate);
    EXPECT_NEAR(c.duration, info.duration, 0.1);
    if (c.video) {
        EXPECT_EQ(AV_PIX_FMT_YUV420P, info.color_format);
        EXPECT_EQ("yuv420p", info.pixel_format);
        EXPECT_EQ(c.outWidth * c.outHeight * 3 / 2, decoder.GetFrameBufferSize());
    }
    if (c.audio) {
        EXPECT_EQ(AV_SAMPLE_FMT_FLT, info.sample_format);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Files, DecoderOpening,
    ::testing::Values(OpenCase{"gop12.mp4", true, true, 64, 48, 64, 48, 25, 0, 2, 44100, 5.0},
                      OpenCase{"bframes.mp4", true, false, 64, 48, 64, 48, 25, 0, 0, 0, 3.0},
                      OpenCase{"gop12.ts", true, true, 64, 48, 64, 48, 25, 0, 2, 44100, 5.0},
                      OpenCase{"anamorphic.mp4", true, false, 64, 48, 64, 36, 25, 0, 0, 0, 1.0},
                      // A display matrix turning -90 degrees (counter-clockwise) asks to
                      // show the picture turned 90 degrees clockwise, and +90 gives 270.
                      OpenCase{"matrix_minus90.mp4", true, false, 64, 48, 64, 48, 25, 90, 0, 0, 3.0},
                      OpenCase{"matrix_plus90.mp4", true, false, 64, 48, 64, 48, 25, 270, 0, 0, 3.0},
                      OpenCase{"rotated_tag.mkv", true, false, 64, 48, 64, 48, 25, 90, 0, 0, 3.0},
                      OpenCase{"tone_mono.mp3", false, true, 0, 0, 0, 0, 0, 0, 1, 44100, 2.0},
                      OpenCase{"tone_6ch.m4a", false, true, 0, 0, 0, 0, 0, 0, 6, 48000, 2.0},
                      OpenCase{"tone.ogg", false, true, 0, 0, 0, 0, 0, 0, 2, 44100, 2.0}),
    [](const ::testing::TestParamInfo<OpenCase>& info) { return CodecTest::TestName(info.param.file); });

TEST(DecoderOpeningFailures, ANonMediaOrMissingFileIsRefusedWithItsPath) {
    LogCapture log;
    const std::string path = MediaPath("notmedia.mp4");
    FFmpegDecoderImpl decoder(path.c_str());
    EXPECT_EQ(-1, decoder.Init());
    EXPECT_FALSE(decoder.IsInited());
    EXPECT_TRUE(log.has(MVNLogLevel::Error, kTag, "Could not open source file " + path + ", exists:1"));

    FFmpegDecoderImpl missing("no-such-film.mp4");
    EXPECT_EQ(-1, missing.Init());
    EXPECT_TRUE(log.has(MVNLogLevel::Error, kTag, "Could not open source file no-such-film.mp4, exists:0"));
    // Released and opened again: the same answer, nothing left over.
    missing.Release();
    EXPECT_EQ(-1, missing.Init());
}
TEST(DecoderOpeningLogs, TellsTheSequenceOfAnOpen) {
    LogCapture log;
    FFmpegDecoderImpl decoder(MediaPath("gop12.mp4").c_str());
    ASSERT_EQ(0, decoder.Init());
    EXPECT_TRUE(log.has(MVNLogLevel::Debug, kTag, "=====Init====="));
    EXPECT_TRUE(log.has(MVNLogLevel::Debug, kTag, "video time_base(1/12800)"));
    EXPECT_TRUE(log.has(MVNLogLevel::Debug, kTag, "audio time_base(1/44100)"));
    EXPECT_TRUE(log.has(MVNLogLevel::Debug, kTag, "seekable:1"));
    EXPECT_TRUE(log.has(MVNLogLevel::Debug, kTag, "has_video:1, has_audio:1"));
    EXPECT_TRUE(log.has(MVNLogLevel::Info, kTag, "origin size:64x48 outsize:64x48, rotation:0.000000"));
    EXPECT_TRUE(log.has(MVNLogLevel::Debug, kTag, "audio sample format is fltp, convert it to flt "));
    EXPECT_TRUE(log.has(MVNLogLevel::Info, kTag, "use send/receive frame api"));
    EXPECT_TRUE(log.has(MVNLogLevel::Debug, kTag, "=====Init done====="));
    EXPECT_EQ(0, decoder.Init());
    EXPECT_EQ(1, log.count(MVNLogLevel::Debug, kTag, "=====Init done====="));
    decoder.Release();
    EXPECT_TRUE(log.has(MVNLogLevel::Debug, kTag, "=====Release done====="));
}

TEST(DecoderOpeningLogs, AnAudioExtensionKeepsTheCoverArtOutOfTheVideo) {
    LogCapture log;
    FFmpegDecoderImpl decoder(MediaPath("cover.mp3").c_str());
    ASSERT_EQ(0, decoder.Init());
    MediaInfo info;
    decoder.GetMediaInfo(&info);
    EXPECT_FALSE(info.has_video);
    EXPECT_EQ(0.0f, info.fps);
    EXPECT_TRUE(log.has(MVNLogLevel::Debug, kTag, "has_video:0, has_audio:1"));
    EXPECT_EQ(0, log.countContaining("Could not find video stream"));
}

TEST(DecoderOpeningLogs, AnamorphicPicturesAreScaledToTheirShape) {
    LogCapture log;
    FFmpegDecoderImpl decoder(MediaPath("anamorphic.mp4").c_str());
    ASSERT_EQ(0, decoder.Init());
    MediaInfo info;
    decoder.GetMediaInfo(&info);
    EXPECT_NEAR(16.0 / 9, info.dar, 1e-5);
    EXPECT_TRUE(log.has(MVNLogLevel::Debug, kTag, "sws 1"));
}

TEST(DecoderOpeningLogs, LimitsScaleThePicturesDownEvenly) {
    FFmpegDecoderImplAsync decoder(MediaPath("gop12.mp4").c_str(), 30, 30, true, 0, -1, false);
    ASSERT_EQ(0, decoder.Init());
    EXPECT_EQ(30, decoder.GetOutputWidth());
    EXPECT_EQ(22, decoder.GetOutputHeight());
    EXPECT_EQ(30, CodecTest::NextPicture(decoder, 1.2).frame);
}

struct SizingCase {
    const char* name;
    int w, h, sarNum, sarDen, maxW, maxH;
    bool scale;
    int outW, outH;
    float dar;
};

class OutputSizing : public ::testing::TestWithParam<SizingCase> {};

TEST_P(OutputSizing, GivesTheExpectedSize) {
    const SizingCase& c = GetParam();
    codec::OutputSize out = codec::OutputSize::Compute(c.w, c.h, c.sarNum, c.sarDen, c.maxW, c.maxH, c.scale);
    EXPECT_EQ(c.outW, out.width);
    EXPECT_EQ(c.outH, out.height);
    EXPECT_NEAR(c.dar, out.dar, 1e-5);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, OutputSizing,
    ::testing::Values(
        SizingCase{"UnknownSarIsSquare", 640, 480, 0, 1, 0, 0, false, 640, 480, 4.0f / 3},
        SizingCase{"PalWideKeepsWidth", 720, 576, 16, 15, 0, 0, false, 720, 540, 4.0f / 3},
        SizingCase{"PortraitKeepsHeight", 480, 640, 2, 1, 0, 0, false, 960, 640, 1.5f},
        SizingCase{"OddResultIsEvened", 64, 48, 1001, 1000, 0, 0, false, 64, 46, 64064.0f / 48000},
        SizingCase{"ScaledDownToWidth", 1920, 1080, 1, 1, 640, 480, true, 640, 360, 16.0f / 9},
        SizingCase{"ScaledDownToHeight", 1080, 1920, 1, 1, 640, 360, true, 202, 360, 9.0f / 16},
        SizingCase{"LimitsIgnoredWithoutScale", 1920, 1080, 1, 1, 640, 360, false, 1920, 1080, 16.0f / 9},
        SizingCase{"AnamorphicScaledToDisplayShape", 720, 576, 64, 45, 640, 360, true, 640, 360, 16.0f / 9},
        // Sample aspect ratios no real file has: the correction would give a
        // side no GPU takes, or one past the range of an int.
        SizingCase{"TallPixelsBeyondAnyTextureAreSquare", 32, 24, 1, 5218, 64, 64, true, 32, 24, 4.0f / 3},
        SizingCase{"WidePixelsBeyondAnyTextureAreSquare", 24, 32, 5218, 1, 0, 0, false, 24, 32, 0.75f},
        SizingCase{"CorrectionPastAnIntIsSquare", 16384, 8192, 1, 2097152, 0, 0, false, 16384, 8192, 2.0f},
        SizingCase{"CorrectionToNothingIsSquare", 2, 1000, 1, 1000, 0, 0, false, 2, 1000, 0.002f},
        SizingCase{"TallestUsableCorrectionIsKept", 64, 48, 3, 1024, 64, 64, true, 64, 16384, 0.00390625f}),
    [](const ::testing::TestParamInfo<SizingCase>& info) { return std::string(info.param.name); });

TEST(OutputSizingLog, TellsWhyAnAbsurdAspectRatioIsIgnored) {
    LogCapture log;
    codec::OutputSize::Compute(32, 24, 1, 5218, 64, 64, true);
    EXPECT_TRUE(log.has(MVNLogLevel::Warn, kTag,
                        "sample aspect ratio 1:5218 would make the 32x24 picture height 125232, its pixels are "
                        "taken as square"));
}

TEST(OutputSizingLog, TellsWhenACorrectionChangesNothing) {
    LogCapture log;
    codec::OutputSize out = codec::OutputSize::Compute(64, 48, 999, 1000, 0, 0, false);
    EXPECT_EQ(64, out.width);
    EXPECT_EQ(48, out.height);
    EXPECT_EQ(1, log.countContaining("calc scale size equal to origin size"));
    EXPECT_TRUE(log.has(MVNLogLevel::Debug, kTag, "dar 1.332000 calc scale size equal to origin size"));
}
