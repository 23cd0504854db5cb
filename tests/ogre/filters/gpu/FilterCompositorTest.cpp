// The compositor back-end: a compositor script over the whole window,
// switched on and off with the back-end, and a clear log line for a script
// the engine doesn't know.
#include <gtest/gtest.h>

#include "GpuTestSupport.h"
#include "LogCapture.h"
#include "filters/MVNOgreFilterCompositor.h"

using namespace Morvane;
using namespace MorvaneTest;

namespace {

constexpr int W = 96;
constexpr int H = 54;

// The GL reader reads the window, where the compositor draws.
class FilterCompositor : public ::testing::Test {
protected:
    // Corner and centre of the window after one frame.
    static void readCornerAndCentre(RGBA& corner, RGBA& centre) {
        MVNOgreManager::getSingleton()->renderOneFrame();
        RenderImage image(W, H);
        ASSERT_TRUE(image.ok());
        corner = image.at(0, 0);
        centre = image.at(W / 2, H / 2);
    }
    Marker windowed{"not_full_screen"};
    Marker reader{"read_use_gl"};
};

TEST_F(FilterCompositor, RunsItsScriptOverTheWindowUntilReleased) {
    EngineRun run(W, H);
    ASSERT_EQ(run.rc, 0);
    TestScene::setBackground(RGBA{200, 200, 200, 255});
    TestScene::addRect("grey", 0, 0, W, H, RGBA{200, 200, 200, 255});

    MVNOgreFilterCompositor compositor("glslCompositor", W, H, 0);
    EXPECT_EQ(compositor.init(), 0);
    ASSERT_TRUE(compositor.isEnabled());
    RGBA corner, centre;
    readCornerAndCentre(corner, centre);
    // The script's vignette darkens the corners and leaves the middle.
    EXPECT_LE(corner.r, 20) << corner;
    EXPECT_NEAR(centre.r, 200, 1) << centre;

    compositor.release();
    EXPECT_FALSE(compositor.isEnabled());
    readCornerAndCentre(corner, centre);
    EXPECT_NEAR(corner.r, 200, 1) << corner;
}

TEST_F(FilterCompositor, AnUnknownScriptIsLoggedAndChangesNothing) {
    EngineRun run(W, H);
    ASSERT_EQ(run.rc, 0);
    LogCapture log;
    MVNOgreFilterCompositor compositor("NoSuchCompositor", W, H, 0);
    EXPECT_EQ(compositor.init(), 0);
    EXPECT_FALSE(compositor.isEnabled());
    EXPECT_EQ(log.count(MVNLogLevel::Error, "MVNOgreFilterCompositor", "compositor dont have NoSuchCompositor"), 1);
}

}  // namespace
