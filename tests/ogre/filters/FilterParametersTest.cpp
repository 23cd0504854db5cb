// What a catalogue filter sends to its material, on configuration, on a
// property change and each frame: driven by the table, recorded by a fake
// back-end, with the quirks that saved projects depend on.
#include <gtest/gtest.h>

#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

#include "LogCapture.h"
#include "filters/MVNFilterParameters.h"
#include "filters/MVNOgreFilterBase.h"
#include "services/MVNProducer.h"
#include "services/MVNProperties.h"

using namespace Morvane;

namespace {

// Remembers every uniform and extra texture it is given, in order.
class RecordingNode : public MVNOgreFilterBase {
public:
    int init() override { return 0; }
    void release() override {}
    void render(int) override {}
    void updateTexture(unsigned char*, int, int) override {}
    void setGeometry(const MVNRect&) override {}
    void setVisible(bool) override {}
    std::string getRTTTextureName() override { return ""; }
    void updateAnimation(int) override {}
    void setAnimation(int) override {}
    void setSceneBlending(int, int) override {}
    void addExtraTexture(const std::string& name, unsigned char* data, int width, int height, int type) override {
        textures.push_back({name, width, height, type});
        firstBytes.push_back(data ? data[0] : -1);
    }
    void setUniformFloat(const std::string& name, float value) override { sent.emplace_back(name, value); }
    void setRotation(int) override {}
    void setZOrder(int) override {}

    // The last value sent under `name`; NaN when never sent.
    float last(const std::string& name) const {
        for (auto it = sent.rbegin(); it != sent.rend(); ++it)
            if (it->first == name) return it->second;
        return NAN;
    }
    int count(const std::string& name) const {
        int n = 0;
        for (const auto& s : sent) n += s.first == name;
        return n;
    }

    struct Texture {
        std::string name;
        int width, height, type;
    };
    std::vector<std::pair<std::string, float>> sent;
    std::vector<Texture> textures;
    std::vector<int> firstBytes;
};

class ClipProducer : public MVNProducer {
public:
    ClipProducer(int width, int height, int playtime) : MVNProducer(MVNProfile(width, height, 25)) {
        setInt32("render.width", width);
        setInt32("render.height", height);
        setInAndOut(0, playtime - 1);
    }
};

class FilterParameters : public ::testing::Test {
protected:
    // The calls the filter service makes, bound as it binds them.
    MVNFilterParameters params(const std::string& resource) {
        return MVNFilterParameters(filter, resource, &node, &producer, lut, 25.0);
    }
    void setupAs(const std::string& resource) {
        params(resource).writeDefaults();
        params(resource).setup();
    }

    MVNProperties filter;
    RecordingNode node;
    ClipProducer producer{320, 180, 100};
    std::string lut = "LutFilterTexture7";
};

TEST_F(FilterParameters, SetupSendsEveryUniformFromItsPropertyOrItsFallback) {
    setupAs("BlurFilter");
    EXPECT_FLOAT_EQ(node.last("ufmBlurSize"), 0.5f);
    EXPECT_FLOAT_EQ(node.last("ufmRectWidth"), 0.5f);
    EXPECT_FLOAT_EQ(node.last("ufmImageW"), 320.0f);
    EXPECT_FLOAT_EQ(node.last("ufmImageH"), 180.0f);

    node.sent.clear();
    filter.setDouble("ufmBlurSize", 0.9);
    filter.setDouble("ufmImageW", 64);
    params("BlurFilter").setup();
    EXPECT_FLOAT_EQ(node.last("ufmBlurSize"), 0.9f);
    EXPECT_FLOAT_EQ(node.last("ufmImageW"), 64.0f) << "the property wins over the render width";
}

TEST_F(FilterParameters, ColorLevelSendsTheConstructorsPointTwoNotItsFallback) {
    setupAs("ColorLevelFilter");
    EXPECT_FLOAT_EQ(node.last("ufmLevelMinimum"), 0.2f);
    node.sent.clear();
    filter.remove("ufmLevelMinimum");
    params("ColorLevelFilter").setup();
    EXPECT_FLOAT_EQ(node.last("ufmLevelMinimum"), 0.0f);
}

TEST_F(FilterParameters, ColoursAreSentAsChannelsOverTwoFiftyFiveUnderTheirChannelKeys) {
    filter.setColor("ufmFirstColor", MVNColor4B(255, 51, 0, 102));
    setupAs("LightMixFilter");
    EXPECT_FLOAT_EQ(node.last("ufmFirstColorR"), 1.0f);
    EXPECT_FLOAT_EQ(node.last("ufmFirstColorG"), 0.2f);
    EXPECT_FLOAT_EQ(node.last("ufmFirstColorA"), 0.4f);
    // The second colour is absent: its table default, opaque black.
    EXPECT_FLOAT_EQ(node.last("ufmSecondColorR"), 0.0f);
    EXPECT_FLOAT_EQ(node.last("ufmSecondColorA"), 1.0f);

    // A change is sent under a channel's key, not the colour's own name.
    node.sent.clear();
    filter.setColor("ufmFirstColor", MVNColor4B(0, 255, 0, 255));
    params("LightMixFilter").setUniform("ufmFirstColor");
    EXPECT_TRUE(node.sent.empty()) << "the colour's own name is no key";
    params("LightMixFilter").setUniform("ufmFirstColorG");
    ASSERT_EQ(node.sent.size(), 1u);
    EXPECT_EQ(node.sent[0], std::make_pair(std::string("ufmFirstColorG"), 1.0f));

    setupAs("GreenCutOutFilter");
    node.sent.clear();
    filter.setColor("ufmColor", MVNColor4B(0, 0, 255, 255));
    params("GreenCutOutFilter").setUniform("ufmColor");
    EXPECT_EQ(node.sent.size(), 3u);
    EXPECT_FLOAT_EQ(node.last("ufmColorB"), 1.0f);
    EXPECT_FLOAT_EQ(node.last("ufmColorR"), 0.0f);
}

TEST_F(FilterParameters, EdgeStrengthGoesBackToItsDefaultOnlyForPrewittAndSketch) {
    for (const char* name : {"PrewittEdgeFilter", "SketchFilter", "SobelEdgeFilter"}) {
        SCOPED_TRACE(name);
        filter.setDouble("ufmEdgeStrength", 3.0);
        node.sent.clear();
        params(name).setup();
        EXPECT_FLOAT_EQ(node.last("ufmEdgeStrength"), 3.0f) << "the user's value reaches the GPU";
        bool resets = std::string(name) != "SobelEdgeFilter";
        double expected = resets ? (std::string(name) == "PrewittEdgeFilter" ? 10.0 : 1.0) : 3.0;
        EXPECT_EQ(filter.getDouble("ufmEdgeStrength", -1), expected);
        EXPECT_FALSE(filter.isBlocked()) << "the reset leaves the filter listening";
    }
}

TEST_F(FilterParameters, LiveKeysAreTheTablesSaveComputedDefaults) {
    setupAs("ShowMachineFilter");
    node.sent.clear();
    filter.setDouble("ufmVideoTime", 50);
    params("ShowMachineFilter").setUniform("ufmVideoTime");
    EXPECT_TRUE(node.sent.empty());
    params("ShowMachineFilter").setUniform("ufmBrightness");
    EXPECT_EQ(node.count("ufmBrightness"), 1);

    setupAs("ShakeTwoFilter");
    node.sent.clear();
    params("ShakeTwoFilter").setUniform("ufmVideoTime");
    EXPECT_FLOAT_EQ(node.last("ufmVideoTime"), 50.0f);

    node.sent.clear();
    params("BlurFilter").setUniform("ufmImageW");
    params("FadeInOutFilter").setUniform("ufmFPS");
    EXPECT_TRUE(node.sent.empty());

    // A live key reads an absent property as zero.
    params("ContrastFilter").setUniform("ufmContrast");
    EXPECT_FLOAT_EQ(node.last("ufmContrast"), 0.0f);
}

TEST_F(FilterParameters, NamesOutsideTheCatalogueSendNothing) {
    setupAs("NoSuchFilter");
    params("NoSuchFilter").setUniform("ufmIntensity");
    params("NoSuchFilter").perFrame(10, 1.0f);
    EXPECT_TRUE(node.sent.empty());
    EXPECT_TRUE(filter.keys().empty());
}

TEST_F(FilterParameters, WithoutBackEndOrProducerSetUniformOnlyLogs) {
    MorvaneTest::LogCapture log;
    MVNFilterParameters(filter, "ContrastFilter", nullptr, &producer, lut, 25).setUniform("ufmContrast");
    MVNFilterParameters(filter, "ContrastFilter", &node, nullptr, lut, 25).setUniform("ufmContrast");
    EXPECT_EQ(log.count(MVNLogLevel::Debug, "MVNFilterSample", "_SetUniform dont have mFilterNode"), 2);
    MVNFilterParameters(filter, "ContrastFilter", &node, nullptr, lut, 25).setup();
    EXPECT_TRUE(node.sent.empty());
}

TEST_F(FilterParameters, PerFrameValuesFollowThePositionInTheClip) {
    producer.setInAndOut(10, 109);
    params("FadeInOutFilter").perFrame(35, 0);
    EXPECT_FLOAT_EQ(node.last("ufmPlaytime"), 100.0f);
    EXPECT_FLOAT_EQ(node.last("ufmProgress"), 0.25f);

    params("ShakeFiveFilter").perFrame(60, 0);
    EXPECT_FLOAT_EQ(node.last("ufmProgress"), 0.5f);

    params("OldMovieFilter").perFrame(30, 0);
    EXPECT_FLOAT_EQ(node.last("ufmTimeScratchLight"), 20.0f);
    EXPECT_FLOAT_EQ(node.last("ufmTime"), 0.2f);

    params("OldTVFilter").perFrame(30, 125.5f);
    EXPECT_FLOAT_EQ(node.last("ufmTime_0_X"), 5.5f);
    EXPECT_FLOAT_EQ(node.last("ufmSin_time_0_X"), std::sin(5.5f));

    node.sent.clear();
    params("ContrastFilter").perFrame(30, 1.0f);
    EXPECT_TRUE(node.sent.empty());
}

// --- the clip-animation span -------------------------------------------------------------------

struct SpanCase {
    double in, out;
    int playtime, clipIn, position;
    bool runs;
    float progress;
};

class AnimationSpan : public ::testing::TestWithParam<SpanCase> {};

TEST_P(AnimationSpan, CoversItsFractionOfTheClip) {
    const SpanCase& c = GetParam();
    float progress = -1;
    EXPECT_EQ(MVNFilterParameters::animationSpan(c.in, c.out, c.playtime, c.clipIn, c.position, progress), c.runs);
    if (c.runs) EXPECT_FLOAT_EQ(progress, c.progress);
}

INSTANTIATE_TEST_SUITE_P(Positions, AnimationSpan,
                         ::testing::Values(SpanCase{0.25, 0.75, 100, 0, 24, false, 0},
                                           SpanCase{0.25, 0.75, 100, 0, 25, true, 0.0f},
                                           SpanCase{0.25, 0.75, 100, 0, 50, true, 0.5f},
                                           SpanCase{0.25, 0.75, 100, 0, 75, true, 1.0f},
                                           SpanCase{0.25, 0.75, 100, 0, 76, false, 0},
                                           SpanCase{0.5, 0.5, 100, 0, 50, true, 0.0f},
                                           SpanCase{0.25, 0.75, 100, 40, 64, false, 0},
                                           SpanCase{0.25, 0.75, 100, 40, 115, true, 1.0f},
                                           SpanCase{0, 0, 100, 0, -1, false, 0}));

TEST_F(FilterParameters, AnimationSpanGivenInFramesBecomesAFraction) {
    filter.setInt32("ufmAnimIn", 20);
    filter.setDouble("ufmAnimOut", 0.6);
    params("AnimClock").setup();
    EXPECT_FLOAT_EQ(float(filter.getDouble("ufmAnimIn", 0)), 0.2f);
    EXPECT_DOUBLE_EQ(filter.getDouble("ufmAnimOut", 0), 0.6);
}

TEST_F(FilterParameters, VideoAnimationRunsToTheClipsEnd) {
    filter.setInt32("videoAnimeType", 1);
    filter.setDouble("ufmAnimOut", 0.5);
    params("AnimClock").setup();
    EXPECT_EQ(filter.getDouble("ufmAnimOut", 0), 1.0);
    params("AnimClock").perFrame(99, 0);
    EXPECT_FLOAT_EQ(node.last("ufmKeepDefault"), 0.0f);
    EXPECT_FLOAT_EQ(node.last("ufmProgress"), 0.99f);
}

// --- masks ---------------------------------------------------------------------------------------

TEST_F(FilterParameters, EveryMaskKeySendsTheAspectAfterIt) {
    producer.setGeometry(MVNRect(0, 0, 200, 100));
    params("MaskCircleFilter").setUniform("ufmPositionX");
    ASSERT_EQ(node.sent.size(), 2u);
    EXPECT_EQ(node.sent[0].first, "ufmPositionX");
    EXPECT_EQ(node.sent[1], std::make_pair(std::string("ufmAspect"), 2.0f));

    node.sent.clear();
    filter.setDouble("ufmHeartSize", 0.5);
    params("MaskHeartFilter").setUniform("ufmHeartSize");
    ASSERT_EQ(node.sent.size(), 3u);
    EXPECT_EQ(node.sent[0].first, "ufmHeartSizeX");
    EXPECT_EQ(node.sent[2].first, "ufmAspect");
}

TEST_F(FilterParameters, AMaskWithoutGeometryTakesTheProfilesShape) {
    params("MaskLinerFilter").setup();
    EXPECT_FLOAT_EQ(node.last("ufmAspect"), 320.0f / 180.0f);
}

struct RadiusCase {
    const char* name;
    float w, h;
    int metaWidth, metaHeight;
    double sx, sy, roundness;
    double radius;
};

class RectangleRadius : public ::testing::TestWithParam<RadiusCase> {};

// The corner radius from the sizes and the source's shape; on landscape
// clips the test is against the source's height in pixels, as always.
TEST_P(RectangleRadius, FollowsTheSizesAndTheSourcesShape) {
    const RadiusCase& c = GetParam();
    MVNProperties filter;
    RecordingNode node;
    ClipProducer producer(640, 360, 100);
    producer.setGeometry(MVNRect(0, 0, c.w, c.h));
    producer.setInt32("metadata.width", c.metaWidth);
    producer.setInt32("metadata.height", c.metaHeight);
    filter.setDouble("ufmRectangleSizeX", c.sx);
    filter.setDouble("ufmRectangleSizeY", c.sy);
    filter.setDouble("ufmCircleRadius", c.roundness);
    std::string lut;
    MVNFilterParameters(filter, "MaskRectangleFilter", &node, &producer, lut, 25).setUniform("ufmCircleRadius");
    ASSERT_GE(node.sent.size(), 3u);
    EXPECT_EQ(node.sent[0].first, "ufmRectangleSizeX");
    EXPECT_EQ(node.sent[1].first, "ufmRectangleSizeY");
    EXPECT_EQ(node.sent[2].first, "ufmCircleRadius");
    EXPECT_FLOAT_EQ(node.sent[2].second, float(c.radius));
}

INSTANTIATE_TEST_SUITE_P(
    Shapes, RectangleRadius,
    ::testing::Values(
        // Landscape: t = 0.5 * 16/9 = 0.889 is below the height 1080, so t.
        RadiusCase{"LandscapeTakesTheWidthSize", 640, 360, 1920, 1080, 0.5, 0.3, 1.0, 0.5 * 1920 / 1080.0 * 0.5},
        // Portrait: the smaller of t and sy.
        RadiusCase{"PortraitTakesTheSmaller", 360, 640, 1080, 1920, 0.5, 0.2, 1.0, 0.2 * 0.5},
        RadiusCase{"PortraitTakesT", 360, 640, 1080, 1920, 0.2, 0.5, 0.5, 0.2 * 1080 / 1920.0 * 0.5 * 0.5}),
    [](const ::testing::TestParamInfo<RadiusCase>& info) { return info.param.name; });

// --- 3D lookup tables ----------------------------------------------------------------------------

std::string writeCube(int n, const std::string& name) {
    std::string path = "/tmp/mvn-params-" + std::to_string(::getpid()) + "-" + name;
    std::ofstream out(path);
    out << "LUT_3D_SIZE " << n << "\n";
    for (int b = 0; b < n; ++b)
        for (int g = 0; g < n; ++g)
            for (int r = 0; r < n; ++r) out << r / float(n - 1) << " " << g / float(n - 1) << " " << b / float(n - 1) << "\n";
    return path;
}

TEST_F(FilterParameters, AMissingOrEmptyTableFlagsTheErrorAndKeepsTheTexture) {
    params("ApplyDynamicLutFilter").setup();
    EXPECT_TRUE(filter.getBoolean("_ufmLutFileError", false)) << "an empty path counts as a failed load";
    EXPECT_FLOAT_EQ(node.last("ufmlutPathError"), 1.0f);
    EXPECT_TRUE(node.textures.empty());

    std::string path = writeCube(5, "b.cube");
    filter.setString("ufmMVNLutPath", path);
    params("ApplyDynamicLutFilter").setup();
    node.sent.clear();
    filter.setString("ufmMVNLutPath", "/no/such.cube");
    params("ApplyDynamicLutFilter").setUniform("ufmMVNLutPath");
    EXPECT_TRUE(filter.getBoolean("_ufmLutFileError", false));
    EXPECT_FLOAT_EQ(node.last("ufmlutPathError"), 1.0f);
    EXPECT_EQ(node.textures.size(), 1u) << "no upload for a failed table";
    EXPECT_EQ(node.count("ufmIntensity"), 0);

    filter.setString("ufmMVNLutPath", path);
    params("ApplyDynamicLutFilter").setUniform("ufmMVNLutPath");
    EXPECT_FALSE(filter.getBoolean("_ufmLutFileError", true));
    EXPECT_FLOAT_EQ(node.last("ufmlutPathError"), 0.0f);
    EXPECT_EQ(node.textures.size(), 2u);
    EXPECT_EQ(node.count("ufmIntensity"), 0) << "a new path leaves the intensity";
    std::remove(path.c_str());
}

}  // namespace
