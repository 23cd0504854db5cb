// The manager's marshalling to the render thread, in the engine-less mode
// (pool and queue, no context), plus the parts of init and the injected
// objects that need no GPU.
#include <gtest/gtest.h>

#include <atomic>
#include <cstdio>
#include <string>
#include <thread>
#include <vector>

#include "LogCapture.h"
#include "engine/MVNOgreManager.h"
#include "engine/MVNOgreRenderable.h"
#include "core/MVNProfile.h"

using Morvane::MVNLogLevel;
using Morvane::MVNOgreManager;
using Morvane::MVNOgreRenderable;
using Morvane::MVNProfile;
using MorvaneTest::LogCapture;

namespace {

const char* const kTag = "Morvane::MVNOgreManager";

MVNOgreManager* manager() { return MVNOgreManager::getSingleton(); }

// Every test leaves the process-wide manager as it found it: released.
class OgreManagerStopped : public ::testing::Test {
protected:
    void SetUp() override { manager()->release(); }
    void TearDown() override { manager()->release(); }
};

class OgreManagerQueueOnly : public OgreManagerStopped {
protected:
    void SetUp() override {
        OgreManagerStopped::SetUp();
        ASSERT_EQ(manager()->startQueueOnly(MVNProfile("hdv_540_24p")), 0);
    }
};

}  // namespace

TEST_F(OgreManagerStopped, CallsBeforeInitAreDroppedWithoutBlocking) {
    LogCapture log;
    bool ran = false;
    manager()->callRenderable([&ran]() { ran = true; }, "dropped");
    manager()->callRenderableWait([&ran]() { ran = true; }, "droppedWait");
    manager()->renderOneFrame();
    EXPECT_EQ(manager()->getRenderImage(), nullptr);
    EXPECT_FALSE(ran);
    EXPECT_FALSE(manager()->isBusy());
    EXPECT_TRUE(log.lines().empty());
}

TEST_F(OgreManagerStopped, WithoutContextGeometryPassesThroughAndSizesAreZero) {
    Morvane::MVNRect rect(10, 20, 30, 40);
    EXPECT_TRUE(manager()->adjustGeometryProfileToWorld(rect).equals(rect));
    EXPECT_TRUE(manager()->adjustGeometryProfileToScreen(rect).equals(rect));
    EXPECT_TRUE(manager()->adjustGeometryScreenToProfile(rect).equals(rect));
    Morvane::MVNPoint p = manager()->adjustPointScreenToProfile(Morvane::MVNPoint{3, 4});
    EXPECT_FLOAT_EQ(p.x, 3);
    EXPECT_FLOAT_EQ(p.y, 4);
    EXPECT_EQ(manager()->getRenderWindowWidth(), 0);
    EXPECT_EQ(manager()->getRenderWindowHeight(), 0);
    EXPECT_TRUE(manager()->isUseTextureFiltering());
}

TEST_F(OgreManagerStopped, GetRenderFrameWithoutAsyncReaderIsNullAndLogged) {
    LogCapture log;
    EXPECT_EQ(manager()->getRenderFrame(), nullptr);
    EXPECT_TRUE(log.has(MVNLogLevel::Error, kTag, "getRenderFrame, not support async mode"));
}

TEST_F(OgreManagerQueueOnly, SequentialWaitsReuseRenderablesFromThePool) {
    LogCapture log;
    for (int i = 0; i < 100; ++i) {
        manager()->callRenderableWait([]() {}, "reuse");
    }
    // The first call builds one; the second may find it not yet recycled
    // and build another; from the third on the pool always has one.
    int built = log.countContaining("callRenderableWait gen new Renderable");
    EXPECT_GE(built, 1);
    EXPECT_LE(built, 2);
}

TEST_F(OgreManagerQueueOnly, NewRenderableIsLoggedWithItsAddressAndName) {
    LogCapture log;
    manager()->callRenderable([]() {}, "firstPost");
    manager()->callRenderableWait([]() {}, "flush");
    std::vector<Morvane::MVNLogLine> lines = log.lines();
    int found = 0;
    for (const auto& line : lines) {
        unsigned long long address = 0;
        char name[32] = {0};
        if (line.tag == kTag && line.level == MVNLogLevel::Debug &&
            std::sscanf(line.message.c_str(), "callRenderable gen new Renderable %llx for %31s", &address, name) == 2) {
            EXPECT_STREQ(name, "firstPost");
            ++found;
        }
    }
    EXPECT_EQ(found, 1);
}

TEST_F(OgreManagerQueueOnly, ReleaseRunsWhatIsQueuedAndDeletesEveryRenderableOnce) {
    LogCapture log;
    std::atomic<int> ran{0};
    // Posters on several threads make the pool grow past one item.
    std::vector<std::thread> posters;
    for (int t = 0; t < 4; ++t) {
        posters.emplace_back([&ran]() {
            for (int i = 0; i < 50; ++i) {
                manager()->callRenderable([&ran]() { ++ran; }, "beforeRelease");
            }
        });
    }
    for (auto& p : posters) {
        p.join();
    }
    manager()->release();
    EXPECT_EQ(ran.load(), 200);
    int built = log.countContaining("gen new Renderable");
    EXPECT_GE(built, 1);
    EXPECT_EQ(log.countContaining("destory name:"), built);
    EXPECT_EQ(log.countContaining("multi delete obj:"), 0);
    EXPECT_TRUE(log.has(MVNLogLevel::Debug, kTag, "release..."));
    EXPECT_TRUE(log.has(MVNLogLevel::Debug, kTag, "release done"));

    // After release the calls are dropped again.
    bool late = false;
    manager()->callRenderableWait([&late]() { late = true; }, "afterRelease");
    EXPECT_FALSE(late);
}

TEST_F(OgreManagerQueueOnly, RenderablesThatAreNotPooledAreDeletedOnRecycle) {
    LogCapture log;
    auto* loose = new MVNOgreRenderable();
    loose->setName("loose");
    manager()->recycleRenderable(loose);
    EXPECT_EQ(log.countContaining("destory name:loose ptr:"), 1);
}

struct OddSizeCase {
    const char* profile;
    int width;
    int height;
    const char* sizeLine;
    const char* error;
};

class OgreManagerOddSize : public OgreManagerStopped, public ::testing::WithParamInterface<OddSizeCase> {};

TEST_P(OgreManagerOddSize, InitRefusesAnOddWindowButLeavesTheRenderThreadRunning) {
    LogCapture log;
    const OddSizeCase& c = GetParam();
    EXPECT_EQ(manager()->init(MVNProfile(c.profile), c.width, c.height), -1);
    EXPECT_TRUE(log.has(MVNLogLevel::Debug, kTag, "init..."));
    EXPECT_TRUE(log.has(MVNLogLevel::Info, kTag, c.sizeLine));
    EXPECT_TRUE(log.has(MVNLogLevel::Error, kTag, c.error));
    EXPECT_FALSE(log.has(MVNLogLevel::Debug, kTag, "init done"));
    EXPECT_EQ(manager()->getOgreContext(), nullptr);

    // Half started: the queue runs until release.
    bool ran = false;
    manager()->callRenderableWait([&ran]() { ran = true; }, "halfStarted");
    EXPECT_TRUE(ran);
}

INSTANTIATE_TEST_SUITE_P(
    Sizes, OgreManagerOddSize,
    ::testing::Values(
        OddSizeCase{"hd_1080_30p", 1921, 1080, "profile size:1920x1080, render_win_size:1921x1080",
                    "error render win size:1921x1080, must be even"},
        // A side of 0 takes the profile's size for both, odd sides included.
        OddSizeCase{"1281x720@25", 0, 0, "profile size:1281x720, render_win_size:0x0",
                    "error render win size:1281x720, must be even"},
        OddSizeCase{"1280x721@25", 1920, 0, "profile size:1280x721, render_win_size:1920x0",
                    "error render win size:1280x721, must be even"}));

struct InjectCase {
    const char* name;
    int secondResult;
    const char* replaceLine;
};

class OgreManagerInject : public OgreManagerStopped, public ::testing::WithParamInterface<InjectCase> {};

TEST_P(OgreManagerInject, SecondInjectionIsLoggedAndReplacesOrIsRefused) {
    const InjectCase& c = GetParam();
    int first = 1;
    int second = 2;
    // The asset manager survives release; clear it so the first injection
    // below is a first one.
    manager()->injectObject("assetManager", nullptr);
    LogCapture log;
    EXPECT_EQ(manager()->injectObject(c.name, &first), 0);
    EXPECT_EQ(log.count(MVNLogLevel::Info, kTag, c.replaceLine), 0);
    EXPECT_EQ(manager()->injectObject(c.name, &second), c.secondResult);
    EXPECT_EQ(log.count(MVNLogLevel::Info, kTag, c.replaceLine), 1);
    char line[128];
    std::snprintf(line, sizeof line, "injectObject:%s, %p", c.name, static_cast<void*>(&second));
    EXPECT_TRUE(log.has(MVNLogLevel::Info, kTag, line));
}

INSTANTIATE_TEST_SUITE_P(
    Objects, OgreManagerInject,
    ::testing::Values(InjectCase{"window", 0, "window object already injected, replace with new"},
                      InjectCase{"view", 0, "view object already injected, replace with new"},
                      InjectCase{"viewController", -1, "view controller already injected, replace with new"}),
    [](const ::testing::TestParamInfo<InjectCase>& info) { return std::string(info.param.name); });

TEST_F(OgreManagerStopped, UnknownInjectedObjectIsRefused) {
    LogCapture log;
    int object = 0;
    EXPECT_EQ(manager()->injectObject("Window", &object), -1);
    EXPECT_TRUE(log.has(MVNLogLevel::Error, kTag, "error inject object:Window"));
}

TEST_F(OgreManagerStopped, ReleaseForgetsInjectedObjectsButTheAssetManager) {
    int object = 0;
    manager()->injectObject("window", &object);
    manager()->injectObject("viewController", &object);
    manager()->injectObject("assetManager", &object);
    manager()->release();
    LogCapture log;
    EXPECT_EQ(manager()->injectObject("window", &object), 0);
    EXPECT_EQ(manager()->injectObject("viewController", &object), 0);
    EXPECT_EQ(manager()->injectObject("assetManager", &object), 0);
    EXPECT_EQ(log.countContaining("window object already injected"), 0);
    EXPECT_EQ(log.countContaining("view controller already injected"), 0);
    EXPECT_EQ(log.count(MVNLogLevel::Info, kTag, "assetManager object already injected, replace with new"), 1);
}
