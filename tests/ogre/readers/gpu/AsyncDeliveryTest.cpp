// Asynchronous read-back: positions queued by updateRenderImage come back as
// frames stamped with those positions, either to the one registered listener
// or through getRenderFrame; the first synchronous read ends async mode.
#include <gtest/gtest.h>

#include <chrono>
#include <mutex>
#include <thread>
#include <vector>

#include "GpuTestSupport.h"
#include "LogCapture.h"
#include "core/MVNFrame.h"
#include "services/MVNFrameListener.h"

using namespace Morvane;
using namespace MorvaneTest;

namespace {

constexpr int W = 96;
constexpr int H = 64;

class CollectingListener : public MVNFrameListener {
public:
    void onFrameRendered(MVNFrame* frame) override {
        std::lock_guard<std::mutex> guard(lock);
        frames.push_back(frame);
    }
    ~CollectingListener() override {
        for (MVNFrame* f : frames) MVNFrame::pushBackPool(f);
    }
    std::mutex lock;
    std::vector<MVNFrame*> frames;
};

// Waits until the render thread has run everything posted so far.
void drainQueue() { onRenderThread([]() {}, "testDrain"); }

void expectMarkedPicture(MVNFrame* frame) {
    ASSERT_NE(frame, nullptr);
    EXPECT_EQ(frame->width(), W);
    EXPECT_EQ(frame->height(), H);
    EXPECT_EQ(frame->colorFormat(), MVN_COLOR_RGBA);
    EXPECT_EQ(frame->size(), W * H * 4);
    Picture pic{frame->buffer()->ptr(), W, H};
    EXPECT_EQ(pic.at(0, 0), kRed);
    EXPECT_EQ(pic.at(W - 1, H - 1), kMagenta);
    EXPECT_EQ(pic.at(W / 2, H / 2), kMagenta);
}

class AsyncDelivery : public ::testing::TestWithParam<const char*> {
protected:
    void SetUp() override {
        run.reset(new EngineRun(W, H));
        ASSERT_EQ(run->rc, 0);
        TestScene::setBackground(kMagenta);
        TestScene::addRect("marker", 0, 0, 4, 4, kRed);
    }
    void TearDown() override { run.reset(); }
    const char* readerTag() const {
        return std::string(GetParam()) == "read_use_direct" ? "Morvane::RenderReaderDirect" : "Morvane::RenderReaderRTT";
    }
    Marker windowed{"not_full_screen"};
    Marker reader{GetParam()};
    std::unique_ptr<EngineRun> run;
};

// A negative position is not queued as a time, yet its frame comes back.
TEST_P(AsyncDelivery, FramesWaitForGetRenderFrameStampedWithTheirPositions) {
    MVNOgreManager* m = MVNOgreManager::getSingleton();
    auto expectNext = [m](int position) {
        MVNFrame* frame = m->getRenderFrame();
        ASSERT_NE(frame, nullptr) << position;
        EXPECT_EQ(frame->frames(), position);
        if (position == 7) expectMarkedPicture(frame);
        MVNFrame::pushBackPool(frame);
    };
    m->updateRenderImage(7);
    drainQueue();
    m->updateRenderImage(8);
    drainQueue();
    expectNext(7);
    expectNext(8);
    EXPECT_EQ(m->getRenderFrame(), nullptr);
    m->updateRenderImage(-1);
    drainQueue();
    expectNext(-1);
}

// One listener at a time: it gets every frame and the queue stays empty; a
// second is refused, and unregistering clears whichever is registered.
TEST_P(AsyncDelivery, TheOneListenerGetsEveryFrameAndASecondIsRefused) {
    MVNOgreManager* m = MVNOgreManager::getSingleton();
    CollectingListener first;
    CollectingListener second;
    LogCapture log;
    m->registerFrameListener(&first);
    m->registerFrameListener(&second);
    EXPECT_TRUE(log.has(MVNLogLevel::Error, readerTag(), "registerFrameListener failed, one listener exist"));
    for (int t = 0; t < 3; ++t) m->updateRenderImage(t);
    drainQueue();
    EXPECT_EQ(m->getRenderFrame(), nullptr);
    m->unregisterFrameListener(&second);
    m->updateRenderImage(4);
    drainQueue();
    std::lock_guard<std::mutex> guard(first.lock);
    ASSERT_EQ(first.frames.size(), 3u);
    for (int t = 0; t < 3; ++t) EXPECT_EQ(first.frames[t]->frames(), t);
    expectMarkedPicture(first.frames[2]);
    EXPECT_TRUE(second.frames.empty());
    MVNFrame* queued = m->getRenderFrame();
    ASSERT_NE(queued, nullptr);
    EXPECT_EQ(queued->frames(), 4);
    MVNFrame::pushBackPool(queued);
}

TEST_P(AsyncDelivery, SyncReadEndsAsyncModeForGood) {
    MVNOgreManager* m = MVNOgreManager::getSingleton();
    ASSERT_TRUE(RenderImage(W, H).ok());
    LogCapture log;
    m->updateRenderImage(5);
    drainQueue();
    EXPECT_TRUE(log.has(MVNLogLevel::Error, readerTag(), "sync mode not support updateRenderTime"));
    EXPECT_TRUE(log.has(MVNLogLevel::Error, readerTag(), "sync mode not support updateRenderImage"));
    EXPECT_EQ(m->getRenderFrame(), nullptr);
}

INSTANTIATE_TEST_SUITE_P(AsyncReaders, AsyncDelivery, ::testing::Values("read_use_rtt", "read_use_direct"),
                         [](const ::testing::TestParamInfo<const char*>& info) {
                             return std::string(info.param).substr(std::string("read_use_").size());
                         });

class SyncOnlyReaders : public ::testing::TestWithParam<const char*> {};

TEST_P(SyncOnlyReaders, GetRenderFrameIsRefusedWithoutAsyncSupport) {
    Marker windowed("not_full_screen");
    Marker reader(GetParam());
    EngineRun run(W, H);
    ASSERT_EQ(run.rc, 0);
    LogCapture log;
    MVNOgreManager::getSingleton()->updateRenderImage(1);
    drainQueue();
    EXPECT_EQ(MVNOgreManager::getSingleton()->getRenderFrame(), nullptr);
    EXPECT_TRUE(log.has(MVNLogLevel::Error, "Morvane::MVNOgreManager", "getRenderFrame, not support async mode"));
}

INSTANTIATE_TEST_SUITE_P(GlReaders, SyncOnlyReaders, ::testing::Values("read_use_rtt_sample", "read_use_gl"),
                         [](const ::testing::TestParamInfo<const char*>& info) {
                             return std::string(info.param).substr(std::string("read_use_").size());
                         });

}  // namespace
