// The filter service through the real engine: a clip's frames go through
// "ogre.filter.sample" into the shared scene or a render texture, chains
// hand pictures on by render-texture name, property changes reach the GPU
// at once, a missing material leaves the clip drawn, and 3D lookup tables
// map colours as the CPU says they should.
#include <gtest/gtest.h>

#include <cmath>
#include <memory>

#include "FilterMediaHarness.h"
#include "PictureClip.h"
#include "LogCapture.h"
#include "core/MVNByteBufferPool.h"
#include "filters/MVNFilterSample.h"
#include "core/MVNFrame.h"
#include "core/MVNLut3d.h"
#include "filters/MVNOgreFilterMaterial.h"
#include "filters/MVNOgreFilterScene.h"
#include "scene/MVNOgreMaterialFilter.h"
#include "timeline/MVNRepository.h"
#include "MVNTestPaths.h"

using namespace Morvane;
using namespace MorvaneTest;

namespace {

constexpr int W = 96;
constexpr int H = 54;

class FilterService : public SharedEngineTest<W, H> {
protected:
    static void SetUpTestSuite() {
        SharedEngineTest::SetUpTestSuite();
        sChart = testChart(W, H);
    }

    static std::unique_ptr<MVNFilterSample> filter(const char* resource) {
        auto f = std::make_unique<MVNFilterSample>(MVNProfile(W, H, 25), resource, MVN_FILTER_USE_NORMAL);
        f->init();
        return f;
    }

    // The clip's frame at `position` through its filters; the frame that
    // comes out goes back to the pool.
    static void play(PictureClip& clip, int position) {
        MVNFrame* frame = nullptr;
        ASSERT_EQ(clip.getImage(position, &frame), 0);
        ASSERT_NE(frame, nullptr);
        MVNFrame::pushBackPool(frame);
    }

    // The value a uniform holds in the filter's material right now.
    static float gpuUniform(MVNFilterSample& f, const std::string& name) {
        float value = NAN;
        onRenderThread([&]() {
            MVNOgreMaterialFilter* material = nullptr;
            if (auto* m = dynamic_cast<MVNOgreFilterMaterial*>(f.filterNode())) material = m->getMaterial();
            if (auto* s = dynamic_cast<MVNOgreFilterScene*>(f.filterNode())) material = s->getMaterial();
            if (material == nullptr || !material->getMaterial()) return;
            auto params = material->getMaterial()->getTechnique(0)->getPass(0)->getFragmentProgramParameters();
            if (const Ogre::GpuConstantDefinition* def = params->_findNamedConstantDefinition(name)) {
                value = *params->getFloatPointer(def->physicalIndex);
            }
        });
        return value;
    }

    // The chart as a function of each pixel.
    static Image mapped(const std::function<RGBA(RGBA)>& f) {
        Image out = sChart;
        for (int y = 0; y < H; ++y)
            for (int x = 0; x < W; ++x) out.set(x, y, f(sChart.at(x, y)));
        return out;
    }

    static Image sChart;
};
Image FilterService::sChart;

uint8_t level(double v) { return static_cast<uint8_t>(std::lround(std::clamp(v, 0.0, 1.0) * 255)); }

TEST_F(FilterService, TwoFiltersChainThroughTheFirstOnesRenderTexture) {
    PictureClip clip(sChart, false);
    auto noRed = filter("RgbFilter");
    auto brighter = filter("ExposureFilter");
    noRed->setDouble("ufmRedAdjustment", 0.0);
    brighter->setDouble("ufmExposure", 1.0);
    ASSERT_EQ(clip.attach(noRed.get()), 0);
    ASSERT_EQ(clip.attach(brighter.get()), 0);
    EXPECT_EQ(noRed->getInt32("_outputType", 0), MVN_OUTPUT_RTT);
    EXPECT_EQ(brighter->getInt32("_inputType", 0), MVN_INPUT_RTT);
    ASSERT_FALSE(noRed->getString("_outputRtt", "").empty());
    EXPECT_EQ(brighter->getString("_inputRtt", ""), noRed->getString("_outputRtt", ""));

    play(clip, 0);
    Image first = renderTexture(noRed->rttName());
    ASSERT_FALSE(first.rgba.empty());
    EXPECT_LE(difference(first, mapped([](RGBA c) { return RGBA{0, c.g, c.b, 255}; })).max, 1);
    Image out = composed();
    Image expected = mapped([](RGBA c) {
        return RGBA{0, level(2.0 * c.g / 255.0), level(2.0 * c.b / 255.0), 255};
    });
    Difference d = difference(out, expected);
    EXPECT_LE(d.max, 1) << "mean " << d.mean;
}

TEST_F(FilterService, OutputKindFourShowsItsRenderTextureInTheScene) {
    PictureClip clip(sChart, false);
    auto noGreen = filter("RgbFilter");
    noGreen->setDouble("ufmGreenAdjustment", 0.0);
    ASSERT_EQ(clip.attach(noGreen.get()), 0);
    noGreen->setInt32("_outputType", MVN_OUTPUT_RTT_NODE);
    ASSERT_NE(dynamic_cast<MVNOgreFilterScene*>(noGreen->filterNode()), nullptr);
    EXPECT_EQ(noGreen->getString("_outputRtt", ""), noGreen->rttName());
    MVNFrame* frame = nullptr;
    ASSERT_EQ(clip.getImage(0, &frame), 0);
    EXPECT_EQ(frame->colorFormat(), MVN_COLOR_RTT);
    EXPECT_EQ(frame->rtt(), noGreen->rttName());
    MVNFrame::pushBackPool(frame);
    Image expected = mapped([](RGBA c) { return RGBA{c.r, 0, c.b, 255}; });
    EXPECT_LE(difference(renderTexture(noGreen->rttName()), expected).max, 1);
    EXPECT_LE(difference(composed(), expected, false).max, 1);
}

TEST_F(FilterService, APropertyChangeReachesTheGpuWithoutARebuild) {
    PictureClip clip(sChart, false);
    auto bright = filter("BrightnessFilter");
    ASSERT_EQ(clip.attach(bright.get()), 0);
    MVNOgreFilterBase* node = bright->filterNode();
    ASSERT_NE(node, nullptr);
    EXPECT_EQ(bright->getString("_outputRtt", "x"), "") << "a lone filter draws into the shared scene";
    play(clip, 0);
    EXPECT_LE(difference(composed(), sChart).max, 1);

    bright->setDouble("ufmBrightness", 0.2);
    EXPECT_EQ(bright->filterNode(), node) << "rebuilt";
    EXPECT_FLOAT_EQ(gpuUniform(*bright, "ufmBrightness"), 0.2f);
    play(clip, 1);
    Image expected = mapped([](RGBA c) {
        return RGBA{level(c.r / 255.0 + 0.2), level(c.g / 255.0 + 0.2), level(c.b / 255.0 + 0.2), 255};
    });
    EXPECT_LE(difference(composed(), expected).max, 1);
}

TEST_F(FilterService, AMissingMaterialIsLoggedAndLeavesTheClipDrawn) {
    MorvaneTest::LogCapture log;
    PictureClip clip(sChart, true);
    auto missing = filter("NoSuchFilterMaterial");
    ASSERT_EQ(clip.attach(missing.get()), 0);
    EXPECT_EQ(missing->filterNode(), nullptr);
    EXPECT_EQ(log.count(MVNLogLevel::Error, "MVNOgreMaterialFilter", "not find material NoSuchFilterMaterial"), 1);
    EXPECT_EQ(log.count(MVNLogLevel::Error, "MVNFilterSample", "Filter render node init failed"), 1);
    play(clip, 0);
    Difference d = difference(composed(), sChart);
    EXPECT_LE(d.max, 1) << "the clip's own quad shows the picture";
}

TEST_F(FilterService, PlayedTimeFollowsPositionsBackwardsToo) {
    PictureClip clip(sChart, false);
    auto tv = filter("OldTVFilter");
    ASSERT_EQ(clip.attach(tv.get()), 0);
    play(clip, 10);
    EXPECT_FLOAT_EQ(tv->playedTime(), 0.0f);
    play(clip, 10);
    EXPECT_FLOAT_EQ(tv->playedTime(), 0.0f) << "the same position again adds nothing";
    play(clip, 35);
    EXPECT_FLOAT_EQ(tv->playedTime(), 1.0f);
    play(clip, 25);
    EXPECT_NEAR(tv->playedTime(), 0.6f, 1e-5) << "ten frames back at 25 fps";
    EXPECT_NEAR(gpuUniform(*tv, "ufmTime_0_X"), 0.6f, 1e-5);
    EXPECT_NEAR(gpuUniform(*tv, "ufmSin_time_0_X"), std::sin(0.6f), 1e-5);
}

TEST_F(FilterService, SampleSpanLimitsBlurToItsPartOfTheClip) {
    PictureClip clip(sChart, false);
    auto blur = filter("BlurFilter");
    blur->setDouble("filterSampleIn", 0.5);
    ASSERT_EQ(clip.attach(blur.get()), 0);
    play(clip, 49);
    EXPECT_FLOAT_EQ(gpuUniform(*blur, "ufmUpdateDefault"), 1.0f);
    EXPECT_LE(difference(composed(), sChart).max, 1) << "outside its span the picture is untouched";
    play(clip, 50);
    EXPECT_FLOAT_EQ(gpuUniform(*blur, "ufmUpdateDefault"), 0.0f);
    EXPECT_GT(difference(composed(), sChart).mean, 1.0) << "inside, the rectangle is blurred";
}

TEST_F(FilterService, ClipAnimationFadesOverItsSpan) {
    PictureClip clip(sChart, false);
    auto fade = filter("AnimFadeInOut");
    fade->setDouble("ufmAnimIn", 0.0);
    fade->setDouble("ufmAnimOut", 0.5);
    fade->setDouble("ufmAnimIsIn", 1.0);
    ASSERT_EQ(clip.attach(fade.get()), 0);
    play(clip, 25);
    EXPECT_FLOAT_EQ(gpuUniform(*fade, "ufmKeepDefault"), 0.0f);
    EXPECT_FLOAT_EQ(gpuUniform(*fade, "ufmProgress"), 0.5f);
    Image expected = mapped([](RGBA c) {
        return RGBA{uint8_t((c.r + 255 + 1) / 2), uint8_t((c.g + 1) / 2), uint8_t((c.b + 255 + 1) / 2), 255};
    });
    // Half transparent over the magenta background (the read-back's alpha
    // is the blend's own and not looked at).
    EXPECT_LE(difference(composed(), expected, false).max, 2);
    play(clip, 60);
    EXPECT_FLOAT_EQ(gpuUniform(*fade, "ufmKeepDefault"), 1.0f);
    EXPECT_LE(difference(composed(), sChart).max, 1);
}

// A filter refuses frames before init, and frames from a render texture
// other than the one its predecessor draws into.
TEST_F(FilterService, ProcessImageRefusesFramesItCannotTake) {
    MorvaneTest::LogCapture log;
    MVNFilterSample idle(MVNProfile(W, H, 25), "ContrastFilter", MVN_FILTER_USE_NORMAL);
    EXPECT_EQ(idle.processImage(0, MVNFrame::pullFromPool(1)), nullptr);
    EXPECT_EQ(log.count(MVNLogLevel::Error, "MVNFilterSample", idle.getStringId() + " processImage failed, not init"),
              1);

    PictureClip clip(sChart, false);
    auto first = filter("ContrastFilter");
    auto second = filter("ContrastFilter");
    ASSERT_EQ(clip.attach(first.get()), 0);
    ASSERT_EQ(clip.attach(second.get()), 0);
    MVNFrame* frame = MVNFrame::pullFromPool(1);
    ASSERT_NE(frame, nullptr);
    frame->setRttData("SomeOtherRtt", 0, 0, MVN_COLOR_RTT);
    EXPECT_EQ(second->processImage(3, frame), nullptr);
    std::string expected = second->getStringId() + " input rtt error SomeOtherRtt->" + first->rttName();
    EXPECT_EQ(log.count(MVNLogLevel::Error, "MVNFilterSample", expected), 1);
}

// --- 3D lookup tables ----------------------------------------------------------------------------

// The table applied on the CPU: trilinear between its entries, red fastest.
RGBA cpuLookUp(const MVNLut3d& lut, RGBA c) {
    const auto& colours = lut.colors();
    int n = static_cast<int>(std::lround(std::cbrt(double(colours.size()))));
    float s[3] = {c.r / 255.0f * (n - 1), c.g / 255.0f * (n - 1), c.b / 255.0f * (n - 1)};
    int i[3];
    float f[3];
    for (int k = 0; k < 3; ++k) {
        i[k] = std::min(int(s[k]), n - 2);
        f[k] = s[k] - i[k];
    }
    float out[3] = {0, 0, 0};
    for (int corner = 0; corner < 8; ++corner) {
        int dr = corner & 1, dg = (corner >> 1) & 1, db = (corner >> 2) & 1;
        float w = (dr ? f[0] : 1 - f[0]) * (dg ? f[1] : 1 - f[1]) * (db ? f[2] : 1 - f[2]);
        const MVNLut3dColor3F& e = colours[(size_t(i[2] + db) * n + (i[1] + dg)) * n + (i[0] + dr)];
        out[0] += w * e.r;
        out[1] += w * e.g;
        out[2] += w * e.b;
    }
    return RGBA{level(out[0]), level(out[1]), level(out[2]), c.a};
}

TEST_F(FilterService, IdentityAndSwapTablesActOnTheRightChannels) {
    PictureClip clip(sChart, false);
    auto apply = filter("ApplyDynamicLutFilter");
    apply->setString("ufmMVNLutPath", std::string(MVN_SOURCE_DIR) + "/media/luts/identity.cube");
    ASSERT_EQ(clip.attach(apply.get()), 0);
    EXPECT_FALSE(apply->getBoolean("_ufmLutFileError", true));
    play(clip, 0);
    EXPECT_LE(difference(composed(), sChart).max, 2) << "identity";

    // A new table of the same size replaces the pixels of the texture.
    apply->setString("ufmMVNLutPath", std::string(MVN_SOURCE_DIR) + "/media/luts/swap_red_blue.cube");
    play(clip, 1);
    EXPECT_LE(difference(composed(), mapped([](RGBA c) { return RGBA{c.b, c.g, c.r, c.a}; })).max, 2) << "swap";

    // A file that can't be read: flagged, and the picture passes as it is.
    apply->setString("ufmMVNLutPath", "/no/such/table.cube");
    EXPECT_TRUE(apply->getBoolean("_ufmLutFileError", false));
    EXPECT_FLOAT_EQ(gpuUniform(*apply, "ufmlutPathError"), 1.0f);
    play(clip, 2);
    EXPECT_LE(difference(composed(), sChart).max, 1) << "an error shows the picture as it is";

    // Another size replaces the texture, and the GPU's trilinear lookup
    // agrees with the processor's.
    std::string warmPath = std::string(MVN_SOURCE_DIR) + "/media/luts/warm.cube";
    MVNLut3d warm;
    ASSERT_EQ(warm.loadFromFile(warmPath), 0);
    apply->setString("ufmMVNLutPath", warmPath);
    EXPECT_FALSE(apply->getBoolean("_ufmLutFileError", true));
    EXPECT_FLOAT_EQ(gpuUniform(*apply, "ufmlutPathError"), 0.0f);
    EXPECT_FLOAT_EQ(gpuUniform(*apply, "ufmHeight"), 33.0f);
    EXPECT_FLOAT_EQ(gpuUniform(*apply, "ufmWidth"), 1089.0f);
    play(clip, 3);
    Difference d = difference(composed(), mapped([&](RGBA c) { return cpuLookUp(warm, c); }));
    EXPECT_LE(d.max, 2) << "mean " << d.mean;
    EXPECT_LE(d.mean, 0.5);
}

// Building and tearing down a filter's own render texture between two
// compositions must not leave the next composition drawn somewhere else.
TEST_F(FilterService, ARenderTextureBuiltAndDroppedBetweenFramesLeavesTheNextFrameRight) {
    PictureClip clip(sChart, false);
    auto grey = filter("HomochromyFilter");
    ASSERT_EQ(clip.attach(grey.get()), 0);
    play(clip, 0);
    Image before = composed();
    {
        PictureClip other(sChart, false);
        auto first = filter("ContrastFilter");
        auto second = filter("ContrastFilter");
        ASSERT_EQ(other.attach(first.get()), 0);
        ASSERT_EQ(other.attach(second.get()), 0);
        ASSERT_EQ(first->getInt32("_outputType", 0), MVN_OUTPUT_RTT);
        other.detachAll();
    }
    grey->setDouble("ufmIntensity", 0.0);
    play(clip, 1);
    EXPECT_LE(difference(composed(), sChart).max, 1);
    EXPECT_GT(difference(before, sChart).mean, 3.0);
}

}  // namespace
