// A decoder closed for a reopen opens again at the next read, keeps its
// scans, and can wait for a file that went away.
#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <vector>

#include "FFmpegDecoderImplAsync.h"
#include "LogCapture.h"
#include "TestMedia.h"

using codec::FFmpegDecoderImpl;
using codec::FFmpegDecoderImplAsync;
using CodecTest::FrameNumberFromLuma;
using CodecTest::MediaPath;
using Morvane::MVNLogLevel;
using MorvaneTest::LogCapture;

namespace {

const char* kTag = "codec::FFmpegDecoderImpl";
const char* kAsyncTag = "codec::FFmpegDecoderImplAsync";

class ReopenableDecoder : public FFmpegDecoderImplAsync {
public:
    explicit ReopenableDecoder(const std::string& path)
        : FFmpegDecoderImplAsync(path.c_str(), 0, 0, false, 0, -1, false) {}
    void PrepareReopen() { _PrepareReopen(); }
    int Show(int n, int* frame) {
        std::vector<uint8_t> picture(static_cast<size_t>(GetFrameBufferSize() > 0 ? GetFrameBufferSize() : 64 * 48 * 2));
        int size = static_cast<int>(picture.size());
        int kind = 0;
        double time = 0;
        int ret = NextVideo(n / 25.0, picture.data(), &size, &kind, &time);
        *frame = ret == 0 ? FrameNumberFromLuma(picture.data(), 64, 48) : -1;
        return ret;
    }
};

}  // namespace

TEST(Reopening, TheNextReadOpensAgainAndLandsOnItsFrame) {
    ReopenableDecoder decoder(MediaPath("gop12.ts"));
    ASSERT_EQ(0, decoder.Init());
    int frame = -1;
    ASSERT_EQ(0, decoder.Show(30, &frame));
    const long long firstPts = decoder.FirstVideoPts();
    LogCapture log;
    decoder.PrepareReopen();
    EXPECT_FALSE(decoder.IsInited());
    EXPECT_TRUE(log.has(MVNLogLevel::Info, kTag, "_PrepareReopen"));
    EXPECT_TRUE(log.has(MVNLogLevel::Debug, kAsyncTag, "_OnPrepareReopen"));

    ASSERT_EQ(0, decoder.Show(60, &frame));
    EXPECT_EQ(60, frame);
    EXPECT_TRUE(decoder.IsInited());
    EXPECT_EQ(firstPts, decoder.FirstVideoPts());  // the scans are not run again
    EXPECT_TRUE(log.has(MVNLogLevel::Debug, kTag, "=====reopen ====="));
    EXPECT_TRUE(log.has(MVNLogLevel::Debug, kAsyncTag, "_OnReopen"));
    EXPECT_TRUE(log.has(MVNLogLevel::Debug, kTag, "=====reopen done====="));
    EXPECT_EQ(0, log.countContaining("first_pts"));
    // Once open, a second prepare is needed for another reopen.
    ASSERT_EQ(0, decoder.Show(61, &frame));
    EXPECT_EQ(1, log.count(MVNLogLevel::Debug, kTag, "=====reopen done====="));
}

TEST(Reopening, AFileThatWentAwayIsOpenedOnceItIsBack) {
    namespace fs = std::filesystem;
    fs::copy_file(MediaPath("gop12.mp4"), "moving.mp4", fs::copy_options::overwrite_existing);
    ReopenableDecoder decoder("moving.mp4");
    ASSERT_EQ(0, decoder.Init());
    int frame = -1;
    ASSERT_EQ(0, decoder.Show(10, &frame));
    fs::rename("moving.mp4", "moved.mp4");
    decoder.PrepareReopen();

    LogCapture log;
    EXPECT_EQ(-3, decoder.Show(25, &frame));
    EXPECT_TRUE(log.has(MVNLogLevel::Error, kTag, "Could not open source file moving.mp4, exists:0"));
    EXPECT_EQ(-3, decoder.Show(25, &frame));

    fs::rename("moved.mp4", "moving.mp4");
    ASSERT_EQ(0, decoder.Show(25, &frame));
    EXPECT_EQ(25, frame);
    fs::remove("moving.mp4");
}

TEST(Reopening, AReleasedDecoderOpensAgainWithInit) {
    ReopenableDecoder decoder(MediaPath("gop12.mp4"));
    ASSERT_EQ(0, decoder.Init());
    int frame = -1;
    ASSERT_EQ(0, decoder.Show(90, &frame));
    decoder.Release();
    EXPECT_FALSE(decoder.IsInited());
    ASSERT_EQ(0, decoder.Init());
    ASSERT_EQ(0, decoder.Show(90, &frame));
    EXPECT_EQ(90, frame);
    ASSERT_EQ(0, decoder.Show(3, &frame));
    EXPECT_EQ(3, frame);
}

TEST(Reopening, ADecoderNeverOpenedIsNotReopened) {
    LogCapture log;
    FFmpegDecoderImpl decoder(MediaPath("gop12.mp4").c_str());
    std::vector<uint8_t> buffer(64 * 48 * 2);
    int size = static_cast<int>(buffer.size());
    int kind = 0;
    double time = 0;
    EXPECT_EQ(-3, decoder.NextFrame(buffer.data(), &size, &kind, &time));
    EXPECT_TRUE(log.has(MVNLogLevel::Error, kTag, "_Reopen failed, need_reopen:0"));
}

TEST(Reopening, ATruncatedFilePlaysWhatItHoldsAndFailsCleanlyAfter) {
    FFmpegDecoderImplAsync decoder(MediaPath("truncated.mp4").c_str(), 0, 0, false, 0, -1, false);
    ASSERT_EQ(0, decoder.Init());
    std::vector<uint8_t> picture(static_cast<size_t>(decoder.GetFrameBufferSize()));
    int size = static_cast<int>(picture.size());
    int kind = 0;
    double time = 0;
    ASSERT_EQ(0, decoder.NextVideo(0.4, picture.data(), &size, &kind, &time));
    EXPECT_EQ(10, FrameNumberFromLuma(picture.data(), 64, 48));
    // The index promises pictures the file no longer holds.
    size = static_cast<int>(picture.size());
    const int beyond = decoder.NextVideo(4.8, picture.data(), &size, &kind, &time);
    EXPECT_TRUE(beyond == -1 || beyond == -2) << beyond;
    // And it still serves what it holds.
    size = static_cast<int>(picture.size());
    ASSERT_EQ(0, decoder.NextVideo(0.8, picture.data(), &size, &kind, &time));
    EXPECT_EQ(20, FrameNumberFromLuma(picture.data(), 64, 48));
}
