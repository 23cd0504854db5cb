// The on-screen window that previews use: the manager builds the SDL context
// in place of the hidden one, services draw into it, and when its user
// resizes it the picture stays whole, at the window's scale, between black
// bars. Read back from the window itself.
#include <gtest/gtest.h>

#include <Ogre.h>
#include <SDL.h>

#include "GpuTestSupport.h"
#include "core/MVNByteBufferPool.h"
#include "engine/MVNOgreContextSDL.h"

using namespace Morvane;
using namespace MorvaneTest;

namespace {

constexpr int W = 64;
constexpr int H = 36;

struct ResizeCase {
    const char* name;
    int winW, winH;  // the window after the resize
    int left, top;   // where the picture lands in it
    int scale;       // window pixels per profile pixel
};

class OnScreenWindow : public ::testing::TestWithParam<ResizeCase> {
protected:
    void SetUp() override { MVNOgreManager::getSingleton()->setOnScreenWindow(true); }
    void TearDown() override { MVNOgreManager::getSingleton()->setOnScreenWindow(false); }
};

// Resizes the window as its user would: the SDL window changes size and
// its resize event reaches the context (sent here by hand: a virtual display
// without a window manager sends none for a resize made by the program).
bool resizeWindow(int w, int h) {
    bool done = false;
    onRenderThread([&]() {
        auto* ctx = MVNOgreManager::getSingleton()->getOgreContext();
        const NativeWindowPair& win = ctx->getWindows().front();
        SDL_SetWindowSize(win.native, w, h);
        SDL_Event resized{};
        resized.type = SDL_WINDOWEVENT;
        resized.window.event = SDL_WINDOWEVENT_RESIZED;
        resized.window.windowID = SDL_GetWindowID(win.native);
        resized.window.data1 = w;
        resized.window.data2 = h;
        SDL_PushEvent(&resized);
        ctx->pollEvents();
        done = static_cast<int>(win.render->getWidth()) == w && static_cast<int>(win.render->getHeight()) == h;
    });
    return done;
}

// The window as it is shown after the next picture: drawn, read, swapped.
std::vector<uint8_t> showAndRead() {
    MVNOgreManager::getSingleton()->renderOneFrame();  // follows the window's size
    std::vector<uint8_t> pixels;
    onRenderThread([&]() {
        auto* ctx = MVNOgreManager::getSingleton()->getOgreContext();
        Ogre::RenderWindow* win = ctx->getRenderWindow();
        win->update(false);
        MVNByteBuffer* image = ctx->getRenderImageWithGLReadPixels();
        if (image) pixels.assign(image->ptr(), image->ptr() + image->size());
        MVNByteBufferPool::sRelease(image);
        win->swapBuffers();
    });
    return pixels;
}

TEST_P(OnScreenWindow, ResizedWindowShowsThePictureWholeBetweenBars) {
    const ResizeCase& c = GetParam();
    EngineRun run(W, H);
    ASSERT_EQ(run.rc, 0);
    auto* ctx = dynamic_cast<MVNOgreContextSDL*>(MVNOgreManager::getSingleton()->getOgreContext());
    ASSERT_NE(ctx, nullptr) << "the manager built the hidden context";
    ASSERT_NE(ctx->getSceneManager(), nullptr);
    EXPECT_EQ(ctx->getSceneManager()->getName(), "MorvaneScene");
    TestScene::setBackground(kMagenta);
    // Markers in two corners of the profile: green top-left, blue bottom-right.
    TestScene::addRect("tl", 0, 0, 8, 8, kGreen);
    TestScene::addRect("br", W - 8, H - 8, 8, 8, kBlue);

    ASSERT_TRUE(resizeWindow(c.winW, c.winH));
    std::vector<uint8_t> pixels = showAndRead();
    ASSERT_EQ(pixels.size(), static_cast<size_t>(c.winW) * c.winH * 4);
    Picture pic{pixels.data(), c.winW, c.winH};
    pic.save(std::string("resized_") + c.name + ".png");

    const int s = c.scale;
    EXPECT_EQ(pic.at(c.left + 1, c.top + 1), kGreen);
    EXPECT_EQ(pic.at(c.left + 8 * s - 2, c.top + 8 * s - 2), kGreen);
    EXPECT_EQ(pic.at(c.left + 8 * s + 1, c.top + 1), kMagenta);
    EXPECT_EQ(pic.at(c.left + W * s - 2, c.top + H * s - 2), kBlue);
    EXPECT_EQ(pic.at(c.left + (W - 8) * s - 2, c.top + H * s - 2), kMagenta);
    if (c.left > 0) {
        EXPECT_EQ(pic.at(c.left - 1, c.winH / 2), kBlack);
        EXPECT_EQ(pic.at(c.left + W * s, c.winH / 2), kBlack);
        EXPECT_EQ(pic.at(0, 0), kBlack);
    }
    if (c.top > 0) {
        EXPECT_EQ(pic.at(c.winW / 2, c.top - 1), kBlack);
        EXPECT_EQ(pic.at(c.winW / 2, c.top + H * s), kBlack);
        EXPECT_EQ(pic.at(c.winW - 1, c.winH - 1), kBlack);
    }

    // Back to the profile's size: no bars, the picture as first shown.
    ASSERT_TRUE(resizeWindow(W, H));
    pixels = showAndRead();
    ASSERT_EQ(pixels.size(), static_cast<size_t>(W) * H * 4);
    Picture back{pixels.data(), W, H};
    EXPECT_EQ(back.at(0, 0), kGreen);
    EXPECT_EQ(back.at(W - 1, H - 1), kBlue);
    EXPECT_EQ(back.at(W / 2, 0), kMagenta);
}

INSTANTIATE_TEST_SUITE_P(Sizes, OnScreenWindow,
                         ::testing::Values(ResizeCase{"taller", 64, 48, 0, 6, 1},
                                           ResizeCase{"wider", 96, 36, 16, 0, 1},
                                           ResizeCase{"twice", 128, 72, 0, 0, 2}),
                         [](const auto& info) { return std::string(info.param.name); });

}  // namespace
