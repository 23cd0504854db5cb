// A pipe cannot seek: no scans at open, pictures in order, later positions
// reached by decoding, and a pipe that ends is opened again from the start.
#include <atomic>
#include <gtest/gtest.h>

#include <csignal>
#include <fcntl.h>
#include <fstream>
#include <iterator>
#include <memory>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>
#include <vector>

#include "FFmpegDecoderImplAsync.h"
#include "LogCapture.h"
#include "TestMedia.h"

using codec::FFmpegDecoderImplAsync;
using CodecTest::MediaPath;
using CodecTest::NextPicture;
using CodecTest::Picture;
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
            mOpened = true;
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
        // open returns, then let its writes fail. Only then: a read side
        // opened while the next feeder's writer waits would be taken for its
        // reader, and that feeder would give up before the real one came.
        int fd = mOpened ? -1 : ::open(mFifo.c_str(), O_RDONLY | O_NONBLOCK);
        mThread.join();
        if (fd >= 0)
            ::close(fd);
    }

private:
    std::string mFifo;
    std::vector<char> mBytes;
    std::atomic<bool> mOpened{false};
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

    static constexpr const char* kFifo = "film.pipe";
    std::string source;
};

}  // namespace

TEST_F(NonSeekableInput, OpensWithoutScansPlaysInOrderAndReachesAFarPositionByDecoding) {
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
        Picture p = NextPicture(decoder, -1);
        ASSERT_EQ(0, p.ret);
        EXPECT_EQ(n, p.frame);
        EXPECT_NEAR(n / 25.0, p.time, 1e-6);
    }
    EXPECT_EQ(75, NextPicture(decoder, 3.0).frame);
    EXPECT_EQ(0, log.countContaining("_SeekVideo"));
}

TEST_F(NonSeekableInput, APipeThatEndsIsOpenedAgainFromTheStart) {
    LogCapture log;
    std::unique_ptr<PipeFeeder> feeder(new PipeFeeder(kFifo, source));
    FFmpegDecoderImplAsync decoder(kFifo, 0, 0, false, 0, -1, false);
    ASSERT_EQ(0, decoder.Init());
    EXPECT_EQ(124, NextPicture(decoder, 4.96).frame);
    EXPECT_EQ(-2, NextPicture(decoder, -1).ret);
    EXPECT_TRUE(log.has(MVNLogLevel::Info, kTag, "_PrepareReopen"));
    EXPECT_FALSE(decoder.IsInited());

    feeder.reset();
    feeder.reset(new PipeFeeder(kFifo, source));
    EXPECT_EQ(0, NextPicture(decoder, -1).frame);
    EXPECT_TRUE(log.has(MVNLogLevel::Debug, kTag, "=====reopen done====="));
    EXPECT_TRUE(log.has(MVNLogLevel::Debug, "codec::FFmpegDecoderImplAsync", "_OnReopen"));
}
