// The module as an application meets it: only the host's public headers, the
// module loaded from its path, the render system built by name. The frames
// that come back are checked pixel by pixel.
#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <memory>
#include <vector>

#include "core/MVNByteBuffer.h"
#include "core/MVNByteBufferPool.h"
#include "timeline/MVNFactory.h"
#include "core/MVNFrame.h"
#include "timeline/MVNModule.h"
#include "core/MVNProfile.h"
#include "services/MVNProperties.h"
#include "services/MVNRenderSystem.h"
#include "services/MVNRenderTexture.h"
#include "XvfbDisplay.h"
#include "MVNTestPaths.h"

using namespace Morvane;

namespace {

::testing::Environment* const kDisplay = ::testing::AddGlobalTestEnvironment(new MorvaneTest::XvfbEnvironment());

constexpr int W = 1280;
constexpr int H = 720;

class RenderSystemFromHost : public ::testing::Test {
protected:
    void SetUp() override {
        // A 16:9 window would otherwise ask the X server for full screen.
        std::ofstream("not_full_screen").put('\n');
        ASSERT_EQ(loadModule(MVN_TEST_MODULE_PATH), 0);
    }
    void TearDown() override { std::remove("not_full_screen"); }

    std::unique_ptr<MVNRenderSystem> make(int winW = 0, int winH = 0) {
        MVNProperties props;
        props.setInt32("render_win_width", winW);
        props.setInt32("render_win_height", winH);
        return std::unique_ptr<MVNRenderSystem>(createRenderSystem("ogreRenderSystem", MVNProfile(W, H, 25), props));
    }

    // Share of pixels that are opaque black: an empty scene shows the
    // viewport's clear colour everywhere.
    static int countNotOpaqueBlack(const uint8_t* p, int pixels) {
        int wrong = 0;
        for (int i = 0; i < pixels; ++i, p += 4) {
            if (p[0] != 0 || p[1] != 0 || p[2] != 0 || p[3] != 255) ++wrong;
        }
        return wrong;
    }
};

TEST_F(RenderSystemFromHost, SyncReadOfAnEmptySceneIsOpaqueBlackAtProfileSize) {
    auto rs = make();
    ASSERT_NE(rs, nullptr);
    ASSERT_EQ(rs->init(), 0);
    EXPECT_EQ(rs->getRenderWindowWidth(), W);
    EXPECT_EQ(rs->getRenderWindowHeight(), H);
    for (int i = 0; i < 3; ++i) {
        MVNByteBuffer* image = rs->getRenderImage();
        ASSERT_NE(image, nullptr);
        ASSERT_EQ(image->size(), W * H * 4);
        EXPECT_EQ(countNotOpaqueBlack(image->ptr(), W * H), 0);
        MVNByteBufferPool::sRelease(image);
    }
    rs->release();
}

TEST_F(RenderSystemFromHost, AsyncFramesCarryTheirPositionsInOrder) {
    auto rs = make();
    ASSERT_NE(rs, nullptr);
    ASSERT_EQ(rs->init(), 0);
    for (int t = 10; t < 13; ++t) rs->updateRenderImage(t);
    // The frames are made on the render thread; a synchronous call behind
    // them (drawing the hidden window) waits until they are done.
    rs->renderOneFrame();
    std::vector<int> times;
    while (MVNFrame* frame = rs->getRenderFrame()) {
        EXPECT_EQ(frame->width(), W);
        EXPECT_EQ(frame->height(), H);
        EXPECT_EQ(frame->colorFormat(), MVN_COLOR_RGBA);
        EXPECT_EQ(countNotOpaqueBlack(frame->buffer()->ptr(), W * H), 0);
        times.push_back(frame->frames());
        MVNFrame::pushBackPool(frame);
    }
    // The hand-over keeps the newest two when the consumer falls behind.
    ASSERT_GE(times.size(), 2u);
    EXPECT_EQ(times.back(), 12);
    for (size_t i = 1; i < times.size(); ++i) EXPECT_LT(times[i - 1], times[i]);
    rs->release();
}

TEST_F(RenderSystemFromHost, PictureUploadedThroughARenderTextureComesBackRightWayUp) {
    auto rs = make();
    ASSERT_NE(rs, nullptr);
    ASSERT_EQ(rs->init(), 0);
    MVNProperties props;
    props.setInt32("width", 64);
    props.setInt32("height", 36);
    std::unique_ptr<MVNRenderTexture> tex(createRenderTexture("ogreRenderTexture", MVNProfile(W, H, 25), props));
    if (!tex) {
        rs->release();
        GTEST_SKIP() << "the module offers no render texture yet";
    }
    // Magenta picture (B,G,R,A bytes) with a red 8x4 block in its top-left corner.
    std::vector<uint8_t> bgra(64 * 36 * 4);
    for (int i = 0; i < 64 * 36; ++i) {
        bool marker = i % 64 < 8 && i / 64 < 4;
        bgra[i * 4] = marker ? 0 : 255;
        bgra[i * 4 + 2] = bgra[i * 4 + 3] = 255;
    }
    tex->setGeometry(MVNRect(0, 0, W, H));
    tex->updateTexture(bgra.data(), 64, 36);
    MVNByteBuffer* image = rs->getRenderImage();
    ASSERT_NE(image, nullptr);
    auto at = [&](int x, int y) {
        const uint8_t* p = image->ptr() + (y * W + x) * 4;
        return std::vector<int>{p[0], p[1], p[2], p[3]};
    };
    EXPECT_EQ(at(10, 10), (std::vector<int>{255, 0, 0, 255}));        // the marker, top left
    EXPECT_EQ(at(W / 2, H / 2), (std::vector<int>{255, 0, 255, 255}));  // magenta
    EXPECT_EQ(at(W - 10, H - 10), (std::vector<int>{255, 0, 255, 255}));
    MVNByteBufferPool::sRelease(image);
    tex.reset();
    rs->release();
}

}  // namespace
