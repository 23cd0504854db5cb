// Two-pass filters through the real engine: "ogre.filter.sample2"'s
// horizontal and vertical Gaussian passes together give the two-dimensional
// Gaussian, as does "ogre.filter.sample"'s "GaussianBlur", which runs its
// kernel as two passes through a texture of its own; each output kind puts
// the result where the chain looks for it.
#include <gtest/gtest.h>

#include <cmath>
#include <memory>

#include "FilterMediaHarness.h"
#include "PictureClip.h"
#include "core/MVNByteBufferPool.h"
#include "core/MVNFrame.h"
#include "filters/MVNFilterSample.h"
#include "filters/MVNFilterSample2.h"
#include "filters/MVNOgreFilterBase.h"

using namespace Morvane;
using namespace MorvaneTest;

namespace {

constexpr int W = 96;
constexpr int H = 54;

// A Gaussian kernel of taps -radius..radius, edges clamped, computed in
// double on the processor, horizontally then vertically. The two-pass
// materials' is sigma 3, radius 9; "GaussianBlur"'s sigma 2, radius 4.
Image gaussian(const Image& in, double sigma = 3, int radius = 9) {
    std::vector<double> weights(2 * radius + 1);
    double sum = 0;
    for (int i = -radius; i <= radius; ++i) sum += weights[i + radius] = std::exp(-(i * i) / (2 * sigma * sigma));
    for (double& w : weights) w /= sum;
    auto pass = [&](const std::vector<double>& src, bool horizontal) {
        std::vector<double> dst(src.size());
        for (int y = 0; y < H; ++y)
            for (int x = 0; x < W; ++x)
                for (int c = 0; c < 4; ++c) {
                    double v = 0;
                    for (int i = -radius; i <= radius; ++i) {
                        int sx = horizontal ? std::clamp(x + i, 0, W - 1) : x;
                        int sy = horizontal ? y : std::clamp(y + i, 0, H - 1);
                        v += weights[i + radius] * src[(sy * W + sx) * 4 + c];
                    }
                    dst[(y * W + x) * 4 + c] = v;
                }
        return dst;
    };
    std::vector<double> values(in.rgba.begin(), in.rgba.end());
    std::vector<double> out = pass(pass(values, true), false);
    Image result{W, H, std::vector<uint8_t>(out.size())};
    for (size_t i = 0; i < out.size(); ++i) result.rgba[i] = static_cast<uint8_t>(std::lround(out[i]));
    return result;
}

class FilterTwoPass : public SharedEngineTest<W, H> {
protected:
    static void SetUpTestSuite() {
        SharedEngineTest::SetUpTestSuite();
        sChart = testChart(W, H);
        sBlurred = gaussian(sChart);
    }

    static std::unique_ptr<MVNFilterSample2> blur() {
        auto f = std::make_unique<MVNFilterSample2>(MVNProfile(W, H, 25), "GaussianBlurX", "GaussianBlurY");
        f->init();
        return f;
    }

    static Image sChart;
    static Image sBlurred;
};
Image FilterTwoPass::sChart;
Image FilterTwoPass::sBlurred;

TEST_F(FilterTwoPass, AloneItDrawsTheSecondPassInTheSharedScene) {
    PictureClip clip(sChart, false);
    auto f = blur();
    ASSERT_EQ(clip.attach(f.get()), 0);
    EXPECT_EQ(f->getInt32("_outputType", 0), MVN_OUTPUT_SCENE);
    EXPECT_FALSE(f->hasSceneTwo());
    MVNFrame* frame = nullptr;
    ASSERT_EQ(clip.getImage(0, &frame), 0);
    ASSERT_NE(frame, nullptr);
    EXPECT_EQ(frame->colorFormat(), MVN_COLOR_RTT);
    EXPECT_EQ(frame->rtt(), "");
    MVNFrame::pushBackPool(frame);
    Difference d = difference(composed(), sBlurred);
    EXPECT_LE(d.max, 2) << "mean " << d.mean;
}

TEST_F(FilterTwoPass, InAChainItHandsOnItsSecondRenderTexture) {
    PictureClip clip(sChart, false);
    auto f = blur();
    auto same = std::make_unique<MVNFilterSample>(MVNProfile(W, H, 25), "BrightnessFilter", MVN_FILTER_USE_NORMAL);
    same->init();
    ASSERT_EQ(clip.attach(f.get()), 0);
    ASSERT_EQ(clip.attach(same.get()), 0);
    EXPECT_EQ(f->getInt32("_outputType", 0), MVN_OUTPUT_RTT);
    ASSERT_TRUE(f->hasSceneTwo());
    EXPECT_EQ(f->getString("_outputRtt", ""), f->rttTwo());
    EXPECT_EQ(same->getString("_inputRtt", ""), f->rttTwo());
    MVNFrame* frame = nullptr;
    ASSERT_EQ(clip.getImage(0, &frame), 0);
    ASSERT_NE(frame, nullptr);
    MVNFrame::pushBackPool(frame);
    Difference d = difference(renderTexture(f->rttTwo()), sBlurred);
    EXPECT_LE(d.max, 2) << "mean " << d.mean;
    d = difference(composed(), sBlurred);
    EXPECT_LE(d.max, 2) << "mean " << d.mean;
}

TEST_F(FilterTwoPass, OutputKindFourAlsoShowsTheResultInTheScene) {
    PictureClip clip(sChart, false);
    auto f = blur();
    ASSERT_EQ(clip.attach(f.get()), 0);
    f->setInt32("_outputType", MVN_OUTPUT_RTT_NODE);
    ASSERT_TRUE(f->hasSceneTwo());
    MVNFrame* frame = nullptr;
    ASSERT_EQ(clip.getImage(0, &frame), 0);
    ASSERT_NE(frame, nullptr);
    EXPECT_EQ(frame->rtt(), f->rttTwo());
    MVNFrame::pushBackPool(frame);
    EXPECT_LE(difference(renderTexture(f->rttTwo()), sBlurred).max, 2);
    EXPECT_LE(difference(composed(), sBlurred, false).max, 2);
}

// "GaussianBlur" of "ogre.filter.sample" draws its 9 x 9 kernel as a
// horizontal pass into a texture of the filter's own and a vertical pass
// from it. Whatever the output kind, the picture is the whole kernel's
// within 2 levels, and the texture between the passes goes with the filter.
enum class Output { Scene, Chained, SceneAndTexture };

std::ostream& operator<<(std::ostream& os, Output o) {
    return os << (o == Output::Scene ? "Scene" : o == Output::Chained ? "Chained" : "SceneAndTexture");
}

class SampleGaussianInTwoPasses : public FilterTwoPass, public ::testing::WithParamInterface<Output> {
protected:
    static int renderTargets() {
        int count = 0;
        onRenderThread([&]() {
            auto it = Ogre::Root::getSingleton().getRenderSystem()->getRenderTargetIterator();
            for (; it.hasMoreElements(); it.moveNext()) ++count;
        });
        return count;
    }
};

TEST_P(SampleGaussianInTwoPasses, DrawsTheWholeKernelAndLeavesNoTextureBehind) {
    const Image reference = gaussian(sChart, 2, 4);
    const int targetsBefore = renderTargets();
    {
        PictureClip clip(sChart, false);
        auto f = std::make_unique<MVNFilterSample>(MVNProfile(W, H, 25), "GaussianBlur", MVN_FILTER_USE_NORMAL);
        f->init();
        auto next = std::make_unique<MVNFilterSample>(MVNProfile(W, H, 25), "BrightnessFilter", MVN_FILTER_USE_NORMAL);
        next->init();
        ASSERT_EQ(clip.attach(f.get()), 0);
        if (GetParam() == Output::Chained) ASSERT_EQ(clip.attach(next.get()), 0);
        if (GetParam() == Output::SceneAndTexture) f->setInt32("_outputType", MVN_OUTPUT_RTT_NODE);
        ASSERT_NE(f->filterNode(), nullptr);
        ASSERT_NE(f->filterNode()->getFirstPass(), nullptr) << "drawn in one pass";

        MVNFrame* frame = nullptr;
        ASSERT_EQ(clip.getImage(0, &frame), 0);
        ASSERT_NE(frame, nullptr);
        MVNFrame::pushBackPool(frame);
        if (GetParam() != Output::Scene) {
            Difference d = difference(renderTexture(f->rttName()), reference);
            EXPECT_LE(d.max, 2) << "mean " << d.mean;
            EXPECT_LT(d.mean, 0.5);
        }
        Difference d = difference(composed(), reference, GetParam() != Output::SceneAndTexture);
        EXPECT_LE(d.max, 2) << "mean " << d.mean;
        EXPECT_LT(d.mean, 0.5);
        EXPECT_GT(difference(composed(), sChart).mean, 2.0) << "nothing was blurred";

        // A rebuild (the chain changed) replaces the texture between the
        // passes instead of adding one.
        const int targetsBuilt = renderTargets();
        f->reconfig();
        EXPECT_EQ(renderTargets(), targetsBuilt);
        clip.detachAll();
        f->release();
    }
    EXPECT_EQ(renderTargets(), targetsBefore);
}

INSTANTIATE_TEST_SUITE_P(OutputKinds, SampleGaussianInTwoPasses,
                         ::testing::Values(Output::Scene, Output::Chained, Output::SceneAndTexture));

}  // namespace
