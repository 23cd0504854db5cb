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
using CodecTest::MediaPath;
using Morvane::MVNLogLevel;
using MorvaneTest::LogCapture;

namespace {

const char* kTag = "codec::FFmpegDecoderImpl";
const char* kAsyncTag = "codec::FFmpegDecoderImplAsync";

struct ReopenableDecoder : FFmpegDecoderImplAsync {
    explicit ReopenableDecoder(const std::string& path) : FFmpegDecoderImplAsync(path.c_str(), 0, 0, false, 0, -1, false) {}
    void PrepareReopen() { _PrepareReopen(); }
    CodecTest::Picture Show(int n) { return CodecTest::NextPicture(*this, n / 25.0); }
};

}  // namespace

TEST(Reopening, TheNextReadOpensAgainAndLandsOnItsFrame) {
    ReopenableDecoder decoder(MediaPath("gop12.ts"));
    ASSERT_EQ(0, decoder.Init());
    ASSERT_EQ(30, decoder.Show(30).frame);
    const long long firstPts = decoder.FirstVideoPts();
    LogCapture log;
    decoder.PrepareReopen();
    EXPECT_FALSE(decoder.IsInited());
    EXPECT_TRUE(log.has(MVNLogLevel::Info, kTag, "_PrepareReopen"));
    EXPECT_TRUE(log.has(MVNLogLevel::Debug, kAsyncTag, "_OnPrepareReopen"));

    EXPECT_EQ(60, decoder.Show(60).frame);
    EXPECT_TRUE(decoder.IsInited());
    EXPECT_EQ(firstPts, decoder.FirstVideoPts());  // the scans are not run again
    EXPECT_TRUE(log.has(MVNLogLevel::Debug, kTag, "=====reopen ====="));
    EXPECT_TRUE(log.has(MVNLogLevel::Debug, kAsyncTag, "_OnReopen"));
    EXPECT_TRUE(log.has(MVNLogLevel::Debug, kTag, "=====reopen done====="));
    EXPECT_EQ(0, log.countContaining("first_pts"));
    // Once open, a second prepare is needed for another reopen.
    EXPECT_EQ(61, decoder.Show(61).frame);
    EXPECT_EQ(1, log.count(MVNLogLevel::Debug, kTag, "=====reopen done====="));
}

TEST(Reopening, AFileThatWentAwayIsOpenedOnceItIsBack) {
    namespace fs = std::filesystem;
    fs::copy_file(MediaPath("gop12.mp4"), "moving.mp4", fs::copy_options::overwrite_existing);
    ReopenableDecoder decoder("moving.mp4");
    ASSERT_EQ(0, decoder.Init());
    ASSERT_EQ(10, decoder.Show(10).frame);
    fs::rename("moving.mp4", "moved.mp4");
    decoder.PrepareReopen();

    LogCapture log;
    EXPECT_EQ(-3, decoder.Show(25).ret);
    EXPECT_TRUE(log.has(MVNLogLevel::Error, kTag, "Could not open source file moving.mp4, exists:0"));
    EXPECT_EQ(-3, decoder.Show(25).ret);

    fs::rename("moved.mp4", "moving.mp4");
    EXPECT_EQ(25, decoder.Show(25).frame);
    fs::remove("moving.mp4");
}

TEST(Reopening, AReleasedDecoderOpensAgainWithInit) {
    ReopenableDecoder decoder(MediaPath("gop12.mp4"));
    ASSERT_EQ(0, decoder.Init());
    ASSERT_EQ(90, decoder.Show(90).frame);
    decoder.Release();
    EXPECT_FALSE(decoder.IsInited());
    ASSERT_EQ(0, decoder.Init());
    EXPECT_EQ(90, decoder.Show(90).frame);
    EXPECT_EQ(3, decoder.Show(3).frame);
}

TEST(Reopening, ADecoderNeverOpenedIsNotReopened) {
    LogCapture log;
    FFmpegDecoderImpl decoder(MediaPath("gop12.mp4").c_str());
    std::vector<uint8_t> buffer(64 * 48 * 2);
    int size = static_cast<int>(buffer.size()), kind = 0;
    double time = 0;
    EXPECT_EQ(-3, decoder.NextFrame(buffer.data(), &size, &kind, &time));
    EXPECT_TRUE(log.has(MVNLogLevel::Error, kTag, "_Reopen failed, need_reopen:0"));
}

TEST(Reopening, ATruncatedFilePlaysWhatItHoldsAndFailsCleanlyAfter) {
    ReopenableDecoder decoder(MediaPath("truncated.mp4"));
    ASSERT_EQ(0, decoder.Init());
    EXPECT_EQ(10, decoder.Show(10).frame);
    // The index promises pictures the file no longer holds.
    const int beyond = decoder.Show(120).ret;
    EXPECT_TRUE(beyond == -1 || beyond == -2) << beyond;
    // And it still serves what it holds.
    EXPECT_EQ(20, decoder.Show(20).frame);
}
