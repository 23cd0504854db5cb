// The async decoder serves pictures by position: near steps ahead decode on,
// near steps back keep the picture on screen, far steps seek; a seek's
// picture waits in the pool's frame until asked for.
#include <gtest/gtest.h>

#include <atomic>
#include <cstdio>
#include <thread>
#include <vector>

#include "FFmpegDecoderImplAsync.h"
#include "FramePool.h"
#include "LogCapture.h"
#include "TestMedia.h"

extern "C" {
#include <libavcodec/avcodec.h>
}

using codec::FFmpegDecoderImplAsync;
using codec::FramePool;
using CodecTest::MediaPath;
using CodecTest::NextPicture;
using Morvane::MVNLogLevel;
using MorvaneTest::LogCapture;

namespace {

const char* kTag = "codec::FFmpegDecoderImplAsync";

// An opened decoder of gop12.mp4 (125 pictures at 25 fps) unless told otherwise.
struct Player : FFmpegDecoderImplAsync {
    explicit Player(const char* file = "gop12.mp4") : FFmpegDecoderImplAsync(MediaPath(file).c_str(), 0, 0, false, 0, -1, false) {
        ok = Init() == 0;
    }
    // Asks for frame n; returns the result and leaves the frame shown in `shown`.
    int Frame(int n) { return Ask(n / 25.0); }
    int Ask(double time) {
        CodecTest::Picture p = NextPicture(*this, time);
        if (p.ret == 0) {
            shown = p.frame;
            lastTime = p.time;
        }
        return p.ret;
    }
    bool ok = false;
    int shown = -1;
    double lastTime = -1;
};

}  // namespace

struct StepCase {
    const char* name;
    int request;       // frame asked for after frame 100 was shown
    int result;        // 0: a picture, 2: the shown one stands
    int shown;         // frame on screen afterwards
    const char* line;  // the position logic's log line
};

class AsyncPositionSteps : public ::testing::TestWithParam<StepCase> {};

TEST_P(AsyncPositionSteps, FollowTheTenFrameRule) {
    const StepCase& c = GetParam();
    // Chatty lines of the position logic appear only with this marker file.
    struct Marker {
        Marker() { CodecTest::WriteText("enable_debug_codec", ""); }
        ~Marker() { std::remove("enable_debug_codec"); }
    } marker;
    Player player;
    ASSERT_TRUE(player.ok);
    ASSERT_EQ(0, player.Frame(100));
    ASSERT_EQ(100, player.shown);
    LogCapture log;
    EXPECT_EQ(c.result, player.Frame(c.request));
    EXPECT_EQ(c.shown, player.shown);
    if (c.line)
        EXPECT_TRUE(log.has(MVNLogLevel::Debug, kTag, c.line)) << c.line;
    else
        EXPECT_EQ(0, log.countContaining("fire seek video"));
}

INSTANTIATE_TEST_SUITE_P(
    FromFrame100, AsyncPositionSteps,
    ::testing::Values(StepCase{"TenAheadDecodesOn", 110, 0, 110, nullptr},
                      StepCase{"ElevenAheadSeeks", 111, 0, 111, "fire seek video req_position:111,last_position:100 "},
                      StepCase{"TenBackKeepsThePicture", 90, 2, 100, "discard frame req_position:90,last_position:100"},
                      StepCase{"ElevenBackSeeks", 89, 0, 89, "fire seek video req_position:89,last_position:100 "},
                      StepCase{"SameFrameStands", 100, 2, 100, "not need decode req_position:100,last_position:100"}),
    [](const ::testing::TestParamInfo<StepCase>& info) { return std::string(info.param.name); });

TEST(AsyncPositionServing, ASeekDecodesIntoAPoolFrameThatTheNextRequestReturns) {
    FramePool::Instance().Clear();
    Player player;
    ASSERT_TRUE(player.ok);
    LogCapture log;
    ASSERT_EQ(0, player.SeekVideo(2.0));
    EXPECT_TRUE(log.has(MVNLogLevel::Debug, kTag, "_SeekNoKeyFrame 2.000000, cached_frame:2.000000"));
    EXPECT_TRUE(log.has(MVNLogLevel::Debug, kTag, "_SeekVideo time:2.000000 res=0"));
    const int freeBefore = FramePool::Instance().FreeCount(FramePool::kVideoSide);
    ASSERT_EQ(0, player.Frame(50));
    EXPECT_EQ(50, player.shown);
    EXPECT_DOUBLE_EQ(2.0, player.lastTime);
    // The cached picture went back to the pool and nothing was decoded.
    EXPECT_EQ(freeBefore + 1, FramePool::Instance().FreeCount(FramePool::kVideoSide));
    EXPECT_EQ(0, log.countContaining("avcodec_receive_frame"));
    EXPECT_EQ(2, player.Frame(50));  // asked again: it stands
}

TEST(AsyncPositionServing, ANegativeTimeGivesTheNextPictureUpToTheEndOfStream) {
    Player player;
    ASSERT_TRUE(player.ok);
    for (int n = 0; n < 3; ++n) {
        ASSERT_EQ(0, player.Ask(-1));
        EXPECT_EQ(n, player.shown);
    }
    ASSERT_EQ(0, player.Frame(80));
    ASSERT_EQ(0, player.Ask(-1));
    EXPECT_EQ(81, player.shown);
    EXPECT_NEAR(81 / 25.0, player.lastTime, 1e-9);
    ASSERT_EQ(0, player.Frame(123));
    ASSERT_EQ(0, player.Ask(-1));
    EXPECT_EQ(124, player.shown);
    EXPECT_EQ(-2, player.Ask(-1));
    // A seekable file plays on after a seek back.
    ASSERT_EQ(0, player.Frame(10));
    EXPECT_EQ(10, player.shown);
}

TEST(AsyncPositionServing, AnIndexTraversalDoesNotLoseThePlace) {
    // The Matroska stream's index is rebuilt by reading the whole file.
    Player player("noindex.mkv");
    ASSERT_TRUE(player.ok);
    ASSERT_EQ(0, player.Frame(60));
    ASSERT_EQ(0, player.LoadKeyInfo());
    ASSERT_EQ(0, player.Frame(58));
    EXPECT_EQ(58, player.shown);
    ASSERT_EQ(0, player.DumpGop());
    ASSERT_EQ(0, player.Frame(63));
    EXPECT_EQ(63, player.shown);
}

TEST(AsyncPositionServing, NextFrameAndPicturesOfAFileWithoutVideoAreRefused) {
    LogCapture log;
    Player player;
    ASSERT_TRUE(player.ok);
    std::vector<uint8_t> picture(static_cast<size_t>(player.GetFrameBufferSize()));
    int size = static_cast<int>(picture.size()), kind = 0;
    double time = 0;
    EXPECT_EQ(-1, player.NextFrame(picture.data(), &size, &kind, &time));
    EXPECT_TRUE(log.has(MVNLogLevel::Error, kTag, "NextFrame Unusable"));

    Player audio("tone_s16.wav");
    ASSERT_TRUE(audio.ok);
    EXPECT_EQ(-1, audio.Ask(0.5));
    EXPECT_TRUE(log.has(MVNLogLevel::Error, kTag, "no video stream"));
    EXPECT_EQ(-1, audio.SeekVideo(0.5));
    EXPECT_TRUE(log.has(MVNLogLevel::Error, kTag, "video stream not exists, not support seek video"));
}

TEST(AsyncPositionServing, TwoThreadsEachGetThePictureTheyAskedFor) {
    Player player;
    ASSERT_TRUE(player.ok);
    std::atomic<int> served{0};
    std::atomic<int> wrong{0};
    auto worker = [&](int offset) {
        for (int i = 0; i < 30; ++i) {
            const int n = (offset + i * 37) % 125;
            CodecTest::Picture p = NextPicture(player, n / 25.0);
            if (p.ret != 0)
                continue;  // 2: the other thread's picture stands, by design
            ++served;
            if (p.frame != n || std::abs(p.time - n / 25.0) > 1e-6)
                ++wrong;
        }
    };
    std::thread a(worker, 0);
    std::thread b(worker, 61);
    a.join();
    b.join();
    EXPECT_EQ(0, wrong.load());
    EXPECT_GT(served.load(), 30);
}

// Reaches into the decoder to make it swallow every packet without output.
struct SilentDecoder : Player {
    void DiscardAllPictures() { video_dec_ctx_->skip_frame = AVDISCARD_ALL; }
};

TEST(AsyncPositionServing, ADecoderThatNeverAnswersEndsTheCallAfterAHundredTries) {
    SilentDecoder decoder;
    ASSERT_TRUE(decoder.ok);
    decoder.DiscardAllPictures();
    LogCapture log;
    EXPECT_EQ(-1, decoder.Ask(-1));
    EXPECT_EQ(1, log.count(MVNLogLevel::Error, kTag, "get eagain too many times"));
    EXPECT_EQ(1, log.count(MVNLogLevel::Warn, kTag, "decode video timeout"));
}
