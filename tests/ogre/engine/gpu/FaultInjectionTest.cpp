// Faults injected one at a time into a running engine: a material that no
// script defines, a transition whose shader does not compile, a step on the
// render thread that throws, a frame pool that runs dry. Each is logged once
// however many frames meet it, the process goes on, and once the fault is
// gone the next frame is right to the pixel. (No display and a missing GL plugin are the engine's
// start-up faults, proven where the engine starts: EngineLifecycleTest.)
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include "LogCapture.h"
#include "ProjectSceneTest.h"

using namespace Morvane;
using namespace MorvaneTest;

namespace {

// A green box on red: the picture every fault must come back to.
const char* const kHealthy = R"([
  { "clips": [ { "service": "ogre.color", "length": 10, "properties": { "color": "#ff0000ff" } } ] },
  { "clips": [ { "service": "ogre.color", "length": 10, "geometry": "[40:20 80x60]",
                 "properties": { "color": "#00ff00ff" } } ] } ])";

struct FaultCase {
    const char* name;
    // The project's tracks with the fault in them, or empty for a fault the
    // test injects while the healthy project draws.
    const char* faultyTracks;
    // What the render thread is made to run before the first frame, if
    // anything.
    std::function<void()> step;
    // The one error line the fault must leave: its tag and message (the
    // message may name the folder of the test, written as "{dir}").
    const char* tag;
    const char* message;
};

class FaultInjection : public ProjectSceneTest, public ::testing::WithParamInterface<FaultCase> {
protected:
    void SetUp() override {
        ProjectSceneTest::SetUp();
        std::ofstream("broken.glsl") << "vec4 transition(vec2 uv)\n{\n    return notDeclared;\n}\n";
    }
    void expectHealthyPicture() {
        RenderImage out(W, H);
        ASSERT_TRUE(out.ok());
        EXPECT_EQ(wrongIn(out, 40, 20, 80, 60, kGreen), 0);
        EXPECT_EQ(wrongIn(out, 0, 0, 320, 20, kRed), 0);
        EXPECT_EQ(wrongIn(out, 120, 20, 200, 160, kRed), 0);
    }
};

TEST_P(FaultInjection, LoggedOnceTheProcessGoesOnAndTheNextFrameIsRight) {
    const FaultCase& c = GetParam();
    {
        LogCapture log;
        const bool loaded = load(c.faultyTracks[0] != '\0' ? c.faultyTracks : kHealthy) == 0;
        for (int position = 0; loaded && position < 4; ++position) {
            if (c.step && position == 0) MVNOgreManager::getSingleton()->callRenderable(c.step, "faultStep");
            draw(position);
            RenderImage out(W, H);  // the read goes through the same queue
            EXPECT_TRUE(out.ok()) << "the engine stopped answering at position " << position;
        }
        std::string message = c.message;
        const size_t at = message.find("{dir}");
        if (at != std::string::npos) message.replace(at, 5, std::filesystem::current_path().string());
        EXPECT_EQ(log.count(MVNLogLevel::Error, c.tag, message), 1) << "the fault is logged once, not per frame";
        MVNProjectLoader::unload(project);
    }
    ASSERT_EQ(load(kHealthy), 0) << loader.error();
    draw(0);
    expectHealthyPicture();
}

INSTANTIATE_TEST_SUITE_P(
    Faults, FaultInjection,
    ::testing::Values(
        FaultCase{"MissingMaterial", R"([
  { "clips": [ { "service": "ogre.color", "length": 10, "properties": { "color": "#ff0000ff" },
                 "filters": [ { "service": "ogre.filter.sample", "resource": "NoScriptDefinesThisFilter" } ] } ] } ])",
                  nullptr, "MVNOgreMaterialFilter", "not find material NoScriptDefinesThisFilter"},
        FaultCase{"ShaderThatDoesNotCompile", R"([
  { "clips": [ { "service": "ogre.color", "length": 4, "properties": { "color": "#ff0000ff" } },
               { "transition": "broken.glsl", "length": 4 },
               { "service": "ogre.color", "length": 8, "properties": { "color": "#0000ffff" } } ] } ])",
                  nullptr, "Morvane::MVNTransitionGlslFile",
                  "{dir}/broken.glsl: 0:3(9): error: `notDeclared' undeclared; 0:3(2): error: `return' with wrong type "
                  "error, in function `transition' returning vec4"},
        FaultCase{"RenderThreadStepThatThrows", "", [] { throw std::runtime_error("the disk is on fire"); },
                  "Morvane::MVNOgreRenderQueue", "faultStep threw: the disk is on fire"}),
    [](const ::testing::TestParamInfo<FaultCase>& info) { return info.param.name; });

// The asynchronous reader copies each picture into a pooled frame; with the
// pool at its limit (frames held elsewhere and not given back) the pictures
// are lost, not stamped with another position, and the reader stays usable.
class ExhaustedFramePool : public ProjectSceneTest {
protected:
    void TearDown() override {
        for (MVNFrame* f : held) MVNFrame::pushBackPool(f);
        MVNFrame::setPoolLimit(limitBefore);
        ProjectSceneTest::TearDown();
    }
    // Asks for the picture of `position` and waits until the render thread
    // has copied it (or failed to): the picture or null.
    MVNFrame* readAsync(int position) {
        MVNOgreManager* manager = MVNOgreManager::getSingleton();
        manager->updateRenderImage(position);
        manager->callRenderableWait([] {}, "testDrain");
        return manager->getRenderFrame();
    }
    int wrongIn(MVNFrame* f, int x, int y, int w, int h, RGBA c, int inset = 2) {
        Picture picture{f->buffer()->ptr(), f->width(), f->height()};
        int wrong = 0;
        for (int py = y + inset; py < y + h - inset; ++py)
            for (int px = x + inset; px < x + w - inset; ++px) wrong += picture.at(px, py) == c ? 0 : 1;
        return wrong;
    }

    const int limitBefore = MVNFrame::poolLimit();
    std::vector<MVNFrame*> held;
};

TEST_F(ExhaustedFramePool, PicturesAreLostWithOneErrorAndTheNextIsRightOnceFramesComeBack) {
    ASSERT_EQ(load(kHealthy), 0) << loader.error();
    draw(0);
    MVNFrame* first = readAsync(0);
    ASSERT_NE(first, nullptr) << "the reader is not asynchronous";
    MVNFrame::pushBackPool(first);

    const int limit = MVNFrame::poolOutstandingCount() + 3;
    MVNFrame::setPoolLimit(limit);
    {
        LogCapture log;
        while (MVNFrame* f = MVNFrame::pullFromPool(1)) held.push_back(f);
        ASSERT_EQ(held.size(), 3u);
        for (int position = 1; position <= 6; ++position) {
            EXPECT_EQ(readAsync(position), nullptr) << "a picture without a frame at position " << position;
        }
        const std::string limitText = std::to_string(limit);
        EXPECT_EQ(log.count(MVNLogLevel::Warn, "Morvane::MVNFramePool",
                            "pull refused, " + limitText + " frames out, the limit is " + limitText),
                  1);
        EXPECT_EQ(log.count(MVNLogLevel::Error, "Morvane::RenderReaderRTT",
                            "postRenderTargetUpdate failed, pull frame error"),
                  1);
        int errors = 0;
        for (const MVNLogLine& line : log.lines()) errors += line.level == MVNLogLevel::Error ? 1 : 0;
        EXPECT_EQ(errors, 1) << "six lost pictures, one error";
    }
    for (MVNFrame* f : held) MVNFrame::pushBackPool(f);
    held.clear();

    MVNFrame* next = readAsync(7);
    ASSERT_NE(next, nullptr) << "no picture once frames came back";
    EXPECT_EQ(next->frames(), 7) << "the picture carries a lost picture's position";
    ASSERT_EQ(next->width(), W);
    ASSERT_EQ(next->height(), H);
    EXPECT_EQ(wrongIn(next, 40, 20, 80, 60, kGreen), 0);
    EXPECT_EQ(wrongIn(next, 0, 0, 320, 20, kRed), 0);
    EXPECT_EQ(wrongIn(next, 120, 20, 200, 160, kRed), 0);
    MVNFrame::pushBackPool(next);
    MVNFrame* after = readAsync(8);
    ASSERT_NE(after, nullptr);
    EXPECT_EQ(after->frames(), 8);
    MVNFrame::pushBackPool(after);
}

}  // namespace
