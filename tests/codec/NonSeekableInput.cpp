// A pipe cannot seek: no scans at open, pictures in order, later positions
// reached by decoding, and a pipe that ends is opened again from the start.
#include <gtest/gtest.h>

#include <csignal>
#include <fcntl.h>
#include <fstream>
#include <iterator>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>
#include <vector>

#include "FFmpegDecoderImplAsync.h"
#include "LogCapture.h"
#include "TestMedia.h"

using codec::FFmpegDecoderImplAsync;
using CodecTest::FrameNumberFromLuma;
using CodecTest::MediaPath;
using Morvane::MVNLogLevel;
using MorvaneTest::LogCapture;

namespace {

const char* kTag = "codec::FFmpegDecoderImpl";

// Feeds a file into a named pipe once a reader opens it.
class PipeFeeder {
public:
    PipeFeeder(const std::string& fifo, const std::string& source) : mFifo(fifo) {
        std::ifstream in(source, std::ios::binary);
        mBytes.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
        mThread = std::thread([this] {
            int fd = ::open(mFifo.c_str(), O_WRONLY);
            if (fd < 0)
                return;
            size_t done = 0;
            while (done < mBytes.size()) {
                ssize_t n = ::write(fd, mBytes.data() + done, mBytes.size() - done);
                if (n <= 0)
                    break;  // the reader went away
                done += static_cast<size_t>(n);
            }
            ::close(fd);
        });
    }
    ~PipeFeeder() {
        // A reader that never came: open the read side so that the writer's
        // open returns, then let its writes fail.
        int fd = ::open(mFifo.c_str(), O_RDONLY | O_NONBLOCK);
        mThread.join();
        if (fd >= 0)
            ::close(fd);
    }

private:
    std::string mFifo;
    std::vector<char> mBytes;
    std::thread mThread;
};

class NonSeekableInput : public ::testing::Test {
protected:
    void SetUp() override {
        std::signal(SIGPIPE, SIG_IGN);
        ::unlink(kFifo);
        ASSERT_EQ(0, ::mkfifo(kFifo, 0600));
        source = MediaPath("piped.mkv");
    }
    void TearDown() override { ::unlink(kFifo); }

    int Next(FFmpegDecoderImplAsync& decoder, double time, int* frame, double* when) {
        std::vector<uint8_t> picture(static_cast<size_t>(decoder.GetFrameBufferSize()));
        int size = static_cast<int>(picture.size());
        int kind = 0;
        int ret = decoder.NextVideo(time, picture.data(), &size, &kind, when);
        *frame = ret == 0 ? FrameNumberFromLuma(picture.data(), 64, 48) : -1;
        return ret;
    }

    static constexpr const char* kFifo = "film.pipe";
    std::string source;
};

}  // namespace

TEST_F(NonSeekableInput, OpensWithoutScansAndPlaysInOrder) {
    PipeFeeder feeder(kFifo, source);
    LogCapture log;
    FFmpegDecoderImplAsync decoder(kFifo, 0, 0, false, 0, -1, false);
    ASSERT_EQ(0, decoder.Init());
    EXPECT_FALSE(decoder.IsSeekable());
    EXPECT_TRUE(log.has(MVNLogLevel::Debug, kTag, "seekable:0"));
    EXPECT_TRUE(log.has(MVNLogLevel::Debug, kTag, "not seekable media, not use FindFirstPTS and FindKeyint"));
    EXPECT_EQ(0, decoder.FirstVideoPts());
    EXPECT_EQ(0, decoder.FirstAudioPts());
    EXPECT_EQ(0, log.countContaining("first_pts"));
    for (int n = 0; n < 30; ++n) {
        int frame = -1;
        double time = -1;
        ASSERT_EQ(0, Next(decoder, -1, &frame, &time));
        EXPECT_EQ(n, frame);
        EXPECT_NEAR(n / 25.0, time, 1e-6);
    }
}

TEST_F(NonSeekableInput, AFarPositionIsReachedByDecoding) {
    PipeFeeder feeder(kFifo, source);
    LogCapture log;
    FFmpegDecoderImplAsync decoder(kFifo, 0, 0, false, 0, -1, false);
    ASSERT_EQ(0, decoder.Init());
    int frame = -1;
    double time = -1;
    ASSERT_EQ(0, Next(decoder, 0.4, &frame, &time));
    EXPECT_EQ(10, frame);
    ASSERT_EQ(0, Next(decoder, 3.0, &frame, &time));
    EXPECT_EQ(75, frame);
    EXPECT_EQ(0, log.countContaining("_SeekVideo"));
}

TEST_F(NonSeekableInput, APipeThatEndsIsOpenedAgainFromTheStart) {
    LogCapture log;
    std::unique_ptr<PipeFeeder> feeder(new PipeFeeder(kFifo, source));
    FFmpegDecoderImplAsync decoder(kFifo, 0, 0, false, 0, -1, false);
    ASSERT_EQ(0, decoder.Init());
    int frame = -1;
    double time = -1;
    ASSERT_EQ(0, Next(decoder, 4.96, &frame, &time));
    EXPECT_EQ(124, frame);
    EXPECT_EQ(-2, Next(decoder, -1, &frame, &time));
    EXPECT_TRUE(log.has(MVNLogLevel::Info, kTag, "_PrepareReopen"));
    EXPECT_FALSE(decoder.IsInited());

    feeder.reset(new PipeFeeder(kFifo, source));
    ASSERT_EQ(0, Next(decoder, -1, &frame, &time));
    EXPECT_EQ(0, frame);
    EXPECT_TRUE(log.has(MVNLogLevel::Debug, kTag, "=====reopen done====="));
    EXPECT_TRUE(log.has(MVNLogLevel::Debug, "codec::FFmpegDecoderImplAsync", "_OnReopen"));
}
