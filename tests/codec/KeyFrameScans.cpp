// The scans at open: first timestamp, key-frame interval, the index from the
// demuxer or by reading the file, and the variable-rate check. The index
// keeps file order: a pts going back is refused, a repeated pts or a stalled
// time is kept with one warning.
#include <gtest/gtest.h>

#include "FFmpegDecoderImpl.h"
#include "KeyInfo.h"
#include "LogCapture.h"
#include "TestMedia.h"

using codec::FFmpegDecoderImpl;
using CodecTest::MediaPath;
using Morvane::MVNLogLevel;
using MorvaneTest::LogCapture;

namespace {
const char* kTag = "codec::FFmpegDecoderImpl";
}

struct ScanCase {
    const char* file;
    long long firstPts;
    int keyintFrames;
    long long keyintPts;
    int loadMode;   // 2: the demuxer's index cannot be trusted
    int keyFrames;  // entries of the index after LoadKeyInfo
    double secondKeyTime;
    bool vfr;
};

class KeyFrameScans : public ::testing::TestWithParam<ScanCase> {};

TEST_P(KeyFrameScans, FindTheTimingOfTheStream) {
    const ScanCase& c = GetParam();
    FFmpegDecoderImpl decoder(MediaPath(c.file).c_str());
    ASSERT_EQ(0, decoder.Init());
    EXPECT_EQ(c.firstPts, decoder.FirstVideoPts());
    EXPECT_EQ(c.keyintFrames, decoder.KeyintFrames());
    EXPECT_EQ(c.keyintPts, decoder.KeyintPts());
    EXPECT_EQ(c.loadMode, decoder.KeyLoadMode());
    EXPECT_EQ(c.vfr, decoder.IsVariableFrameRate());
    ASSERT_EQ(0, decoder.LoadKeyInfo());
    ASSERT_NE(nullptr, decoder.GetKeyInfo());
    EXPECT_EQ(c.keyFrames, decoder.GetKeyInfo()->Count());
    if (c.keyFrames > 1) {
        EXPECT_NEAR(c.secondKeyTime, decoder.GetKeyInfo()->At(1)->time - decoder.FirstVideoTime(), 1e-6);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Files, KeyFrameScans,
    ::testing::Values(ScanCase{"gop12.mp4", 0, 12, 6144, 0, 11, 0.48, false},
                      ScanCase{"bframes.mp4", 0, 12, 6144, 2, 7, 0.48, false},
                      ScanCase{"single_key.mp4", 0, 0, 0, 0, 1, 0, false},
                      ScanCase{"gop12.ts", 128090, 12, 43200, 2, 11, 0.48, false},
                      ScanCase{"noindex.mkv", 23, 12, 480, 2, 11, 0.48, false},
                      ScanCase{"vfr.mp4", 0, 12, 480, 0, 7, 0.48, true}),
    [](const ::testing::TestParamInfo<ScanCase>& info) { return CodecTest::TestName(info.param.file); });

TEST(KeyFrameScanLogs, ANegativeFirstDtsMakesTheFirstPtsZero) {
    LogCapture log;
    FFmpegDecoderImpl decoder(MediaPath("bframes.mp4").c_str());
    ASSERT_EQ(0, decoder.Init());
    EXPECT_TRUE(log.has(MVNLogLevel::Debug, kTag, "first_pts 0 dts -1024 pts_dts_delta 1024"));
    EXPECT_TRUE(log.has(MVNLogLevel::Debug, kTag, "first video pts:0, first audio pts:-9223372036854775808"));
    EXPECT_TRUE(log.has(MVNLogLevel::Debug, kTag, "keyint_:6144"));
}

TEST(KeyFrameScanLogs, ASingleKeyFrameGivesNoInterval) {
    LogCapture log;
    FFmpegDecoderImpl decoder(MediaPath("single_key.mp4").c_str());
    ASSERT_EQ(0, decoder.Init());
    EXPECT_TRUE(log.has(MVNLogLevel::Warn, kTag, "not find keyint, not support seek to no key frame"));
    EXPECT_TRUE(log.has(MVNLogLevel::Debug, kTag, "keyint_:0"));
}

TEST(KeyFrameScanLogs, AStreamWithoutIndexIsTraversed) {
    LogCapture log;
    FFmpegDecoderImpl decoder(MediaPath("noindex.mkv").c_str());
    ASSERT_EQ(0, decoder.Init());
    // Probing put the first clusters' key frames into the demuxer's index,
    // fewer than the scan sees.
    EXPECT_EQ(1, log.countContaining("index_entries 4 more than "));
    EXPECT_EQ(2, decoder.KeyLoadMode());
    ASSERT_EQ(0, decoder.LoadKeyInfo());
    EXPECT_EQ(0, log.count(MVNLogLevel::Debug, kTag, "keyinfo exists"));
}

TEST(KeyFrameScanLogs, AGoodIndexIsLoadedOnce) {
    LogCapture log;
    FFmpegDecoderImpl decoder(MediaPath("gop12.mp4").c_str());
    EXPECT_EQ(-1, decoder.LoadKeyInfo());
    EXPECT_TRUE(log.has(MVNLogLevel::Error, kTag, "LoadKeyInfo failed, not initialized"));
    ASSERT_EQ(0, decoder.Init());
    ASSERT_EQ(0, decoder.LoadKeyInfo());
    EXPECT_TRUE(log.has(MVNLogLevel::Debug, kTag, "keyinfo exists"));
    EXPECT_EQ(0, log.countContaining("please use traverse"));
}

TEST(KeyFrameScanLogs, VariableFrameRateIsNoticedTwice) {
    LogCapture log;
    FFmpegDecoderImpl decoder(MediaPath("vfr.mp4").c_str());
    ASSERT_EQ(0, decoder.Init());
    EXPECT_TRUE(log.has(MVNLogLevel::Info, kTag, "meta.media.variable_frame_rate 1"));
    EXPECT_TRUE(log.has(MVNLogLevel::Info, kTag, "variable frame rate need fix pts"));
    EXPECT_TRUE(log.has(MVNLogLevel::Verbose, kTag, "checking VFR: pkt.duration 30"));
}

TEST(KeyFrameScanLogs, DumpGopTellsEveryGroup) {
    FFmpegDecoderImpl decoder(MediaPath("gop12.mp4").c_str());
    ASSERT_EQ(0, decoder.Init());
    LogCapture log;
    ASSERT_EQ(0, decoder.DumpGop());
    EXPECT_EQ(11, log.countContaining("gop="));
    EXPECT_EQ(10, log.countContaining("gop=12, tmp_size="));
    EXPECT_EQ(1, log.countContaining("gop=5, tmp_size="));
    EXPECT_EQ(1, log.countContaining("cost time:"));
}

TEST(KeyInfo, RefusesAPtsGoingBackButKeepsARepeatedPtsOrAStalledTimeWithAWarning) {
    const char* tag = "codec::KeyInfo";
    LogCapture log;
    codec::KeyInfo info;
    info.Add(1000, 1.0);
    EXPECT_EQ(-1, info.Add(999, 1.5));
    EXPECT_EQ(1, info.Count());
    EXPECT_TRUE(log.has(MVNLogLevel::Error, tag, "pts:999 not increasing"));
    EXPECT_EQ(0, info.Add(1000, 1.0));
    EXPECT_TRUE(log.has(MVNLogLevel::Warn, tag, "same pts last:1000,cur:1000"));
    EXPECT_EQ(0, info.Add(2000, 0.5));
    EXPECT_TRUE(log.has(MVNLogLevel::Warn, tag, "not increasing time (2000,0.500000) last(1000,1.000000)"));
    EXPECT_EQ(3, info.Count());
    EXPECT_EQ(3, static_cast<int>(log.lines().size()));  // one line each
    EXPECT_EQ(nullptr, info.At(3));
    EXPECT_EQ(nullptr, info.At(-1));
    log.clear();
    info.Dump();
    EXPECT_TRUE(log.has(MVNLogLevel::Debug, tag, "2000==>0.500000"));
}
