// Faults injected one at a time into a running engine: a material that no
// script defines, a transition whose shader does not compile, a step on the
// render thread that throws. Each is logged once however many frames meet
// it, the process goes on, and once the fault is gone the next frame is
// right to the pixel. (No display and a missing GL plugin are the engine's
// start-up faults, proven where the engine starts: EngineLifecycleTest.)
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <stdexcept>
#include <string>

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

}  // namespace
