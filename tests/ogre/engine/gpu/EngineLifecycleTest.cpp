// Bring-up and tear-down of the engine: it starts, stops and starts again in
// one process; without an X display or without the GL plugin init fails with
// the reason in the log and the process goes on.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "GpuTestSupport.h"
#include "LogCapture.h"
#include "engine/MVNOgreContext.h"
#include "engine/MVNOgreRenderSystem.h"
#include "MVNTestPaths.h"

using namespace Morvane;
using namespace MorvaneTest;

namespace {

constexpr int W = 64;
constexpr int H = 64;

class EngineLifecycle : public ::testing::Test {
protected:
    // One read of a fresh scene: magenta with a red corner marker.
    static void expectWorkingRead() {
        TestScene::setBackground(kMagenta);
        TestScene::addRect("marker", 0, 0, 2, 2, kRed);
        RenderImage image(W, H);
        ASSERT_TRUE(image.ok());
        EXPECT_EQ(image.at(0, 0), kRed);
        EXPECT_EQ(image.at(2, 2), kMagenta);
        EXPECT_EQ(image.at(W - 1, H - 1), kMagenta);
    }
    Marker windowed{"not_full_screen"};
};

TEST_F(EngineLifecycle, WithoutDisplayInitFailsWithTheReasonAndTheProcessGoesOn) {
    std::string display = std::getenv("DISPLAY") ? std::getenv("DISPLAY") : "";
    ::unsetenv("DISPLAY");
    {
        LogCapture log;
        EngineRun run(W, H);
        EXPECT_EQ(run.rc, -1);
        EXPECT_EQ(log.countContaining("initApp error"), 1);
        EXPECT_EQ(log.countContaining("open X display"), 1);
    }
    ::setenv("DISPLAY", display.c_str(), 1);
    EngineRun again(W, H);
    ASSERT_EQ(again.rc, 0);
    expectWorkingRead();
}

TEST_F(EngineLifecycle, WithoutTheGlPluginInitFailsWithNoRenderSystems) {
    namespace fs = std::filesystem;
    fs::create_directories("noGl");
    {
        // The build's own plugin list without the GL render system.
        std::ifstream in(MVN_BINARY_DIR "/share/morvane/plugins.cfg");
        std::ofstream out("noGl/plugins.cfg");
        for (std::string line; std::getline(in, line);) {
            if (line.find("RenderSystem_GL") == std::string::npos) out << line << "\n";
        }
    }
    fs::copy_file(MVN_BINARY_DIR "/share/morvane/resources.cfg", "noGl/resources.cfg",
                  fs::copy_options::overwrite_existing);
    ::setenv("OGRE_CONFIG_DIR", (fs::current_path() / "noGl").c_str(), 1);
    {
        LogCapture log;
        EngineRun run(W, H);
        EXPECT_EQ(run.rc, -1);
        EXPECT_TRUE(log.has(MVNLogLevel::Error, "Morvane::MVNOgreContextBase", "No RenderSystems available"));
    }
    ::unsetenv("OGRE_CONFIG_DIR");
    EngineRun again(W, H);
    ASSERT_EQ(again.rc, 0);
    expectWorkingRead();
}

TEST_F(EngineLifecycle, ReleaseOfARenderSystemWhoseInitFailedDoesNothing) {
    MVNOgreRenderSystem rs(MVNProfile(W, H, 25), 63, 64);  // odd width: refused
    LogCapture log;
    EXPECT_EQ(rs.init(), -1);
    EXPECT_TRUE(log.has(MVNLogLevel::Error, "Morvane::MVNRenderSystem", "Ogre Manager init failed"));
    log.clear();
    rs.release();
    EXPECT_EQ(log.count(MVNLogLevel::Debug, "Morvane::MVNOgreManager", "release..."), 0);
    EXPECT_EQ(rs.getRenderImage(), nullptr);
    MVNOgreManager::getSingleton()->release();  // the half-started manager's own way out

    // The same process can still start an engine.
    MVNOgreRenderSystem good(MVNProfile(W, H, 25), 0, 0);
    ASSERT_EQ(good.init(), 0);
    expectWorkingRead();
    good.release();
    good.release();  // a second release does nothing
    EXPECT_FALSE(good.isInitialized());
}

// The choice reads the levels the running render system offers.
TEST_F(EngineLifecycle, ContextChoosesFourTimesMultisamplingHere) {
    EngineRun run(W, H);
    ASSERT_EQ(run.rc, 0);
    int level = -1;
    onRenderThread([&]() { level = MVNOgreManager::getSingleton()->getOgreContext()->chooseAntiAliasingLevel(); });
    EXPECT_EQ(level, 4);
}

struct AaCase {
    std::vector<std::string> offered;
    int level;
};

class AntiAliasingChoice : public ::testing::TestWithParam<AaCase> {};

TEST_P(AntiAliasingChoice, PrefersEightThenFourElseNone) {
    EXPECT_EQ(MVNOgreContextBase::antiAliasingLevelFor(GetParam().offered), GetParam().level);
}

INSTANTIATE_TEST_SUITE_P(Offers, AntiAliasingChoice,
                         ::testing::Values(AaCase{{"0", "2", "4", "16"}, 4}, AaCase{{"0", "2"}, 0},
                                           AaCase{{"0", "4", "8", "16"}, 8}, AaCase{{}, 0}));

struct FullScreenCase {
    int width, height, screenW, screenH;
    bool fullScreen;
};

class FullScreenCheck : public ::testing::TestWithParam<FullScreenCase> {};

TEST_P(FullScreenCheck, OnlyA43WindowWellInsideTheScreenIsWindowed) {
    const FullScreenCase& c = GetParam();
    EXPECT_EQ(MVNOgreContext::checkFullScreen(c.width, c.height, c.screenW, c.screenH), c.fullScreen);
    touchMarker("not_full_screen");
    EXPECT_FALSE(MVNOgreContext::checkFullScreen(c.width, c.height, c.screenW, c.screenH));
    removeMarker("not_full_screen");
}

INSTANTIATE_TEST_SUITE_P(Sizes, FullScreenCheck,
                         ::testing::Values(FullScreenCase{1920, 1080, 1920, 1080, true},  // not 4:3
                                           FullScreenCase{640, 480, 1920, 1080, false},   // room on both sides
                                           FullScreenCase{1280, 960, 1920, 1080, true},   // 960 + 144 > 1080
                                           FullScreenCase{1024, 768, 1152, 864, true}));  // 1024 + 192 > 1152

}  // namespace
