// "ogre.filter.sample2" through the real engine: the horizontal and the
// vertical Gaussian pass together give the two-dimensional Gaussian, and
// each output kind puts the result where the chain looks for it.
#include <gtest/gtest.h>

#include <cmath>
#include <memory>

#include "FilterMediaHarness.h"
#include "PictureClip.h"
#include "core/MVNByteBufferPool.h"
#include "core/MVNFrame.h"
#include "filters/MVNFilterSample.h"
#include "filters/MVNFilterSample2.h"

using namespace Morvane;
using namespace MorvaneTest;

namespace {

constexpr int W = 96;
constexpr int H = 54;

// The blur materials' kernel: sigma 3, taps -9..9, edges clamped, computed
// in double on the processor, horizontally then vertically.
Image gaussian(const Image& in) {
    double weights[19];
    double sum = 0;
    for (int i = -9; i <= 9; ++i) sum += weights[i + 9] = std::exp(-(i * i) / 18.0);
    for (double& w : weights) w /= sum;
    auto pass = [&](const std::vector<double>& src, bool horizontal) {
        std::vector<double> dst(src.size());
        for (int y = 0; y < H; ++y)
            for (int x = 0; x < W; ++x)
                for (int c = 0; c < 4; ++c) {
                    double v = 0;
                    for (int i = -9; i <= 9; ++i) {
                        int sx = horizontal ? std::clamp(x + i, 0, W - 1) : x;
                        int sy = horizontal ? y : std::clamp(y + i, 0, H - 1);
                        v += weights[i + 9] * src[(sy * W + sx) * 4 + c];
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

}  // namespace
