// Every catalogue name has a material of that name whose programs compile,
// link and draw; every uniform the processor may send is declared as a float
// in its fragment program; neutral settings leave the picture as it is.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

#include "PictureClip.h"
#include "filters/MVNFilterCatalogue.h"

using namespace Morvane;
using namespace MorvaneTest;

namespace {

constexpr int W = 96;
constexpr int H = 54;

// One engine and one harness for every test of a process.
class FilterMedia : public SharedEngineTest<W, H> {
protected:
    static void SetUpTestSuite() {
        SharedEngineTest::SetUpTestSuite();
        if (sRun->rc != 0) return;
        sHarness = new FilterMediaHarness(W, H);
        sChart = testChart(W, H);
        sHarness->setInput(sChart);
    }
    static void TearDownTestSuite() {
        delete sHarness;
        sHarness = nullptr;
        SharedEngineTest::TearDownTestSuite();
    }

    static inline FilterMediaHarness* sHarness = nullptr;
    static inline Image sChart;
};

std::vector<std::string> families() {
    std::vector<std::string> out;
    for (int i = 0; i < MVNFilterCatalogue::count(); ++i) {
        std::string family = MVNFilterCatalogue::at(i).family;
        if (std::find(out.begin(), out.end(), family) == out.end()) out.push_back(family);
    }
    return out;
}

class FilterFamily : public FilterMedia, public ::testing::WithParamInterface<std::string> {};

TEST_P(FilterFamily, EveryMaterialCompilesDrawsAndDeclaresItsUniformsAsFloats) {
    int members = 0;
    for (int i = 0; i < MVNFilterCatalogue::count(); ++i) {
        const MVNFilterCatalogueEntry& entry = MVNFilterCatalogue::at(i);
        if (GetParam() != entry.family) continue;
        ++members;
        SCOPED_TRACE(entry.name);
        std::vector<std::string> errors;
        std::vector<std::string> badUniforms;
        Image out = sHarness->render(entry.name, {}, &errors, [&](Ogre::Pass* pass) {
            ASSERT_TRUE(pass->hasFragmentProgram());
            Ogre::GpuProgramParametersSharedPtr params = pass->getFragmentProgramParameters();
            for (int u = 0; u < entry.sentUniformCount; ++u) {
                const Ogre::GpuConstantDefinition* def = params->_findNamedConstantDefinition(entry.sentUniforms[u]);
                if (!def || def->constType != Ogre::GCT_FLOAT1) badUniforms.push_back(entry.sentUniforms[u]);
            }
            EXPECT_NE(params->_findNamedConstantDefinition("inputImageTexture"), nullptr);
        });
        ASSERT_FALSE(out.rgba.empty()) << "no material " << entry.name;
        // For a look by eye: MVN_FILTER_PICTURES=folder keeps every result.
        if (const char* dir = std::getenv("MVN_FILTER_PICTURES")) {
            out.picture().save(std::string(dir) + "/" + entry.name + ".png");
        }
        for (const std::string& e : errors) ADD_FAILURE() << "engine: " << e;
        EXPECT_TRUE(badUniforms.empty()) << "not declared as float: " << ::testing::PrintToString(badUniforms);
    }
    EXPECT_GT(members, 0);
}

INSTANTIATE_TEST_SUITE_P(Catalogue, FilterFamily, ::testing::ValuesIn(families()),
                         [](const ::testing::TestParamInfo<std::string>& info) { return info.param; });

}  // namespace

namespace {

struct NeutralCase {
    const char* material;
    Uniforms uniforms;
    const char* why;
};
std::ostream& operator<<(std::ostream& os, const NeutralCase& c) { return os << c.material << " " << c.why; }

class NeutralSettings : public FilterMedia, public ::testing::WithParamInterface<NeutralCase> {};

// At their neutral values the adjustments, and the effects that can be
// switched off, give back every pixel within one level: the exact tolerance
// of an identity through 8-bit textures.
TEST_P(NeutralSettings, LeaveEveryPixelWithinOneLevel) {
    Image out = sHarness->render(GetParam().material, GetParam().uniforms);
    ASSERT_FALSE(out.rgba.empty());
    Difference d = difference(out, sChart);
    EXPECT_LE(d.max, 1) << "mean " << d.mean;
    EXPECT_LE(d.mean, 0.25);
}

INSTANTIATE_TEST_SUITE_P(
    Adjustments, NeutralSettings,
    ::testing::Values(
        NeutralCase{"BrightnessFilter", {{"ufmBrightness", 0}, {"ufmAlpha", 1}}, "brightness 0"},
        NeutralCase{"ContrastFilter", {{"ufmContrast", 1}}, "contrast 1"},
        NeutralCase{"SaturationFilter", {{"ufmSaturation", 1}}, "saturation 1"},
        NeutralCase{"ExposureFilter", {{"ufmExposure", 0}}, "exposure 0"},
        NeutralCase{"ColorLevelFilter",
                    {{"ufmLevelMinimum", 0}, {"ufmLevelMiddle", 0.5f}, {"ufmLevelMaximum", 1}, {"ufmMinOutput", 0},
                     {"ufmMaxOutput", 1}},
                    "full levels"},
        NeutralCase{"GammaGrayFilter", {{"ufmGamma", 1}}, "gamma 1"},
        NeutralCase{"RgbFilter", {{"ufmRedAdjustment", 1}, {"ufmGreenAdjustment", 1}, {"ufmBlueAdjustment", 1}}, "1 1 1"},
        NeutralCase{"ShadowsHgihlightsFilter", {{"ufmShadows", 0}, {"ufmHighlights", 1}}, "0 and 1"},
        NeutralCase{"WhiteBlanceFilter", {{"ufmTemperature", 5000}, {"ufmTint", 0}}, "5000 K"},
        NeutralCase{"HueAdjustFilter", {{"ufmStrength", 0}}, "strength 0"},
        NeutralCase{"HueAdjustFilter", {{"ufmHueI", 1}, {"ufmHueQ", 0}, {"ufmStrength", 1}}, "no turn"},
        NeutralCase{"HomochromyFilter", {{"ufmIntensity", 0}}, "intensity 0"},
        NeutralCase{"ImageColorFixFilter", {}, "its defaults"},
        NeutralCase{"SharpenFilter", {{"ufmSharpnessStrength", 0}}, "strength 0"},
        NeutralCase{"PaintingFilter", {{"ufmRadius", 0}}, "radius 0"},
        NeutralCase{"VignetteFilter", {{"ufmAlpha", 0}}, "alpha 0"},
        NeutralCase{"GlowFilter", {{"ufmBrightness", 0}}, "brightness 0"},
        NeutralCase{"FishEyeFilter", {{"ufmPushOutSize", 0}}, "no push"},
        NeutralCase{"WhirlpoolFilter", {{"ufmAngle", 0}}, "angle 0"},
        NeutralCase{"ShapeChangeFilter", {{"ufmScale", 0}}, "scale 0"},
        NeutralCase{"ZoomRestoreFilter", {{"ufmProgress", 0.3f}}, "whole picture"},
        NeutralCase{"BlurFilter", {{"ufmUpdateDefault", 1}}, "outside its span"},
        NeutralCase{"MosaicFilter", {{"ufmUpdateDefault", 1}}, "outside its span"},
        NeutralCase{"FadeInOutFilter", {{"ufmVideoIn", 0}, {"ufmVideoOut", 0}}, "both fades off"},
        NeutralCase{"FadeInOutFilter", {{"ufmPlaytime", 250}, {"ufmFPS", 25}, {"ufmProgress", 0.5f}}, "mid-clip"},
        NeutralCase{"FlashWhiteFliter", {{"ufmProgress", 0.6f}}, "after the flash"},
        NeutralCase{"ApplyDynamicLutFilter", {{"ufmlutPathError", 1}}, "no table"},
        NeutralCase{"MaskCircleFilter", {{"ufmInvert", 1}, {"ufmCircleSizeX", 0}, {"ufmCircleSizeY", 0}}, "empty inverted"},
        NeutralCase{"80TimeFilter", {{"ufmIntensity", 0}}, "intensity 0"}));

}  // namespace

namespace {

struct ValueCase {
    const char* name;
    const char* material;
    Uniforms uniforms;
    RGBA in;
    RGBA expected;
};
std::ostream& operator<<(std::ostream& os, const ValueCase& c) { return os << c.name; }

class KnownValues : public FilterMedia, public ::testing::WithParamInterface<ValueCase> {};

Image flat(int w, int h, RGBA c) {
    Image img{w, h, std::vector<uint8_t>(static_cast<size_t>(w) * h * 4)};
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) img.set(x, y, c);
    return img;
}

// A flat picture through an adjustment comes out at the value its formula
// gives, within one level, everywhere.
TEST_P(KnownValues, FlatPictureComesOutAtTheComputedValue) {
    sHarness->setInput(flat(W, H, GetParam().in));
    Image out = sHarness->render(GetParam().material, GetParam().uniforms);
    sHarness->setInput(sChart);
    ASSERT_FALSE(out.rgba.empty());
    Difference d = difference(out, flat(W, H, GetParam().expected));
    EXPECT_LE(d.max, 1) << "centre pixel " << out.at(W / 2, H / 2) << ", expected " << GetParam().expected;
}

INSTANTIATE_TEST_SUITE_P(
    Adjustments, KnownValues,
    ::testing::Values(
        ValueCase{"BrightnessAddsItsShare", "BrightnessFilter", {{"ufmBrightness", 0.2f}}, {96, 96, 96, 255},
                  {147, 147, 147, 255}},
        ValueCase{"BrightnessAlphaScalesOpacity", "BrightnessFilter", {{"ufmAlpha", 0.5f}}, {96, 96, 96, 255},
                  {96, 96, 96, 128}},
        ValueCase{"ExposureOneStopDoubles", "ExposureFilter", {{"ufmExposure", 1}}, {64, 32, 16, 255},
                  {128, 64, 32, 255}},
        ValueCase{"ContrastTwoDoublesTheDistanceFromGrey", "ContrastFilter", {{"ufmContrast", 2}}, {96, 160, 128, 255},
                  {65, 193, 129, 255}},
        ValueCase{"SaturationZeroIsLuma", "SaturationFilter", {{"ufmSaturation", 0}}, {200, 100, 50, 255},
                  {124, 124, 124, 255}},
        ValueCase{"HomochromyIsLuma", "HomochromyFilter", {{"ufmIntensity", 1}}, {200, 100, 50, 255},
                  {124, 124, 124, 255}},
        ValueCase{"RgbScalesEachChannel", "RgbFilter",
                  {{"ufmRedAdjustment", 1}, {"ufmGreenAdjustment", 0}, {"ufmBlueAdjustment", 0.5f}},
                  {200, 100, 50, 255}, {200, 0, 25, 255}},
        ValueCase{"LevelsStretchTheRange", "ColorLevelFilter", {{"ufmLevelMinimum", 0.2f}, {"ufmLevelMaximum", 0.6f}},
                  {102, 153, 200, 255}, {128, 255, 255, 255}},
        ValueCase{"LevelsOutputRange", "ColorLevelFilter", {{"ufmMinOutput", 0.2f}, {"ufmMaxOutput", 0.6f}},
                  {0, 255, 128, 255}, {51, 153, 102, 255}},
        ValueCase{"LightWhiteBlackAboveThresholdIsWhite", "LightWhiteBlackFilter", {{"ufmThreshold", 0.4f}},
                  {128, 128, 128, 255}, {255, 255, 255, 255}},
        ValueCase{"LightMixMapsGreyBetweenTheColours", "LightMixFilter",
                  {{"ufmFirstColorR", 1}, {"ufmFirstColorG", 0}, {"ufmFirstColorB", 0}, {"ufmSecondColorR", 0},
                   {"ufmSecondColorG", 0}, {"ufmSecondColorB", 1}},
                  {255, 255, 255, 255}, {255, 0, 0, 255}},
        ValueCase{"GreenKeyClearsGreen", "GreenCutOutFilter", {{"ufmDiffZ", 0}}, {0, 255, 0, 255}, {0, 255, 0, 0}},
        ValueCase{"GreenKeyKeepsRed", "GreenCutOutFilter", {}, {255, 0, 0, 255}, {255, 0, 0, 255}},
        ValueCase{"CustomKeyClearsItsColour", "GreenCutOutFilter",
                  {{"ufmTypeChose", 2}, {"ufmColorR", 1}, {"ufmColorG", 0}, {"ufmColorB", 0}, {"ufmDiffZ", 0}},
                  {255, 0, 0, 255},
                  {255, 0, 0, 0}},
        ValueCase{"FadeStartsTransparent", "FadeInOutFilter", {{"ufmPlaytime", 100}, {"ufmFPS", 25}},
                  {10, 20, 30, 255}, {10, 20, 30, 0}},
        ValueCase{"FadeHalfWayIn", "FadeInOutFilter",
                  {{"ufmPlaytime", 250}, {"ufmFPS", 25}, {"ufmProgress", 0.1f}}, {10, 20, 30, 255},
                  {10, 20, 30, 128}},
        ValueCase{"FlashStartsWhite", "FlashWhiteFliter", {{"ufmStrength", 50}}, {10, 20, 30, 255},
                  {255, 255, 255, 255}}));

}  // namespace

namespace {

std::vector<const MVNFilterCatalogueEntry*> familyMembers(const std::string& family) {
    std::vector<const MVNFilterCatalogueEntry*> out;
    for (int i = 0; i < MVNFilterCatalogue::count(); ++i) {
        if (family == MVNFilterCatalogue::at(i).family) out.push_back(&MVNFilterCatalogue::at(i));
    }
    return out;
}

// Each colour look is a grade of its own: visibly different from the picture
// and from every other look, and nothing at intensity 0.
TEST_F(FilterMedia, EveryColourLookIsDistinctFromThePictureAndFromEachOther) {
    std::vector<const MVNFilterCatalogueEntry*> looks = familyMembers("look");
    ASSERT_EQ(looks.size(), 58u);
    std::vector<Image> graded;
    for (const MVNFilterCatalogueEntry* look : looks) {
        SCOPED_TRACE(look->name);
        graded.push_back(sHarness->render(look->name, {{"ufmIntensity", 1}}));
        ASSERT_FALSE(graded.back().rgba.empty());
        Difference fromPicture = difference(graded.back(), sChart, false);
        EXPECT_GE(fromPicture.mean, 6.0) << "too close to the picture";
        Image half = sHarness->render(look->name, {{"ufmIntensity", 0.5f}});
        Difference halfWay = difference(half, sChart, false);
        EXPECT_GT(halfWay.mean, fromPicture.mean * 0.3);
        EXPECT_LT(halfWay.mean, fromPicture.mean * 0.7);
    }
    for (size_t a = 0; a < graded.size(); ++a) {
        for (size_t b = a + 1; b < graded.size(); ++b) {
            Difference d = difference(graded[a], graded[b], false);
            EXPECT_GE(d.mean, 3.0) << looks[a]->name << " and " << looks[b]->name << " look alike (max " << d.max
                                   << ")";
        }
    }
}

Difference alphaAgainst(const Image& img, uint8_t alpha) {
    Image expected = img;
    for (size_t i = 3; i < expected.rgba.size(); i += 4) expected.rgba[i] = alpha;
    return difference(img, expected);
}

// Every clip animation shows nothing at the start of a reveal, the whole
// picture at its end, and something between at its middle; a hide runs the
// other way, and ufmKeepDefault 1 draws the plain picture.
TEST_F(FilterMedia, EveryClipAnimationRevealsAndHidesThePicture) {
    for (const MVNFilterCatalogueEntry* anim : familyMembers("animation")) {
        for (float effect : {0.0f, 1.0f}) {
            SCOPED_TRACE(std::string(anim->name) + (effect > 0 ? " with effect" : ""));
            auto draw = [&](float isIn, float progress, float keep) {
                return sHarness->render(anim->name, {{"ufmAnimIsIn", isIn},
                                                     {"ufmProgress", progress},
                                                     {"ufmKeepDefault", keep},
                                                     {"ufmUseEffect", effect}});
            };
            EXPECT_LE(difference(draw(1, 0.5f, 1), sChart).max, 1) << "kept default";
            EXPECT_EQ(alphaAgainst(draw(1, 0, 0), 0).max, 0) << "start of the reveal";
            EXPECT_LE(difference(draw(1, 1, 0), sChart).max, 1) << "end of the reveal";
            EXPECT_LE(difference(draw(0, 0, 0), sChart).max, 1) << "start of the hide";
            EXPECT_EQ(alphaAgainst(draw(0, 1, 0), 0).max, 0) << "end of the hide";
            Image middle = draw(1, 0.5f, 0);
            EXPECT_GT(difference(middle, sChart).mean, 2.0) << "middle equals the picture";
            EXPECT_GT(alphaAgainst(middle, 0).mean, 2.0) << "middle is empty";
        }
    }
}

}  // namespace

namespace {

struct MaskCase {
    const char* name;
    const char* material;
    Uniforms uniforms;
    bool centreShown;
    bool cornerShown;
};
std::ostream& operator<<(std::ostream& os, const MaskCase& c) { return os << c.name; }

int maxColour(RGBA a, RGBA b) {
    return std::max({std::abs(a.r - b.r), std::abs(a.g - b.g), std::abs(a.b - b.b)});
}

class MaskShapes : public FilterMedia, public ::testing::WithParamInterface<MaskCase> {};

// Inside the shape the picture stays as it is; outside it turns transparent.
TEST_P(MaskShapes, KeepThePictureInsideAndClearItOutside) {
    Image out = sHarness->render(GetParam().material, GetParam().uniforms);
    ASSERT_FALSE(out.rgba.empty());
    RGBA centre = out.at(W / 2, H / 2);
    RGBA corner = out.at(W - 2, H - 2);
    EXPECT_EQ(centre.a, GetParam().centreShown ? 255 : 0) << centre;
    EXPECT_EQ(corner.a, GetParam().cornerShown ? 255 : 0) << corner;
    if (GetParam().centreShown) EXPECT_LE(maxColour(centre, sChart.at(W / 2, H / 2)), 1);
}

INSTANTIATE_TEST_SUITE_P(
    Masks, MaskShapes,
    ::testing::Values(
        MaskCase{"CircleKeepsItsMiddle", "MaskCircleFilter", {}, true, false},
        MaskCase{"InvertedCircleKeepsTheCorners", "MaskCircleFilter", {{"ufmInvert", 1}}, false, true},
        MaskCase{"RectangleKeepsItsMiddle", "MaskRectangleFilter", {{"ufmCircleRadius", 0.05f}}, true, false},
        MaskCase{"LineKeepsTheUpperHalf", "MaskLinerFilter", {{"ufmPositionY", 0.1f}}, true, false},
        MaskCase{"TurnedLineKeepsTheLowerHalf", "MaskLinerFilter", {{"ufmOrient", 180}, {"ufmPositionY", -0.1f}},
                 true, true},
        MaskCase{"BandAlongTheMiddle", "MaskDoubleLinerFilter", {{"ufmLineWidth", 0.2f}}, true, false},
        MaskCase{"HeartOfSizeZeroShowsNothing", "MaskHeartFilter", {}, false, false},
        MaskCase{"HeartKeepsItsMiddle", "MaskHeartFilter", {{"ufmHeartSizeX", 1.0f}, {"ufmHeartSizeY", 1.0f}}, true,
                 false},
        MaskCase{"StarKeepsItsMiddle", "MaskStarShapeFilter", {{"ufmStarSizeX", 1.0f}, {"ufmStarSizeY", 1.0f}}, true,
                 false}));

}  // namespace

namespace {

// The full kernel on the processor: every tap of a (2 * radius + 1)^2
// Gaussian (or of one row or column), the picture's edge repeated outside.
Image gaussianReference(const Image& in, float sigma, int radiusX, int radiusY) {
    Image out = in;
    auto weight = [sigma](int d) { return std::exp(-float(d * d) / (2.0f * sigma * sigma)); };
    for (int y = 0; y < in.height; ++y) {
        for (int x = 0; x < in.width; ++x) {
            double sum[4] = {0, 0, 0, 0};
            double total = 0;
            for (int dy = -radiusY; dy <= radiusY; ++dy) {
                for (int dx = -radiusX; dx <= radiusX; ++dx) {
                    double w = weight(dx) * weight(dy);
                    RGBA c = in.at(std::clamp(x + dx, 0, in.width - 1), std::clamp(y + dy, 0, in.height - 1));
                    sum[0] += c.r * w;
                    sum[1] += c.g * w;
                    sum[2] += c.b * w;
                    sum[3] += c.a * w;
                    total += w;
                }
            }
            auto level = [&](double v) { return uint8_t(std::lround(v / total)); };
            out.set(x, y, {level(sum[0]), level(sum[1]), level(sum[2]), level(sum[3])});
        }
    }
    return out;
}

// The blurs read between texels to fetch fewer times than the kernel has
// taps; what they draw must still be the whole kernel's picture.
TEST_F(FilterMedia, GaussianBlursDrawWhatTheirWholeKernelGives) {
    struct Case {
        const char* material;
        float sigma;
        int rx, ry;
    };
    for (const Case& c : {Case{"GaussianBlur", 2, 4, 4}, Case{"GaussianBlurX", 3, 9, 0},
                          Case{"GaussianBlurY", 3, 0, 9}}) {
        SCOPED_TRACE(c.material);
        std::vector<std::string> errors;
        Image out = sHarness->render(c.material, {{"ufmImageW", float(W)}, {"ufmImageH", float(H)}}, &errors);
        ASSERT_FALSE(out.rgba.empty());
        EXPECT_TRUE(errors.empty()) << errors.front();
        Difference d = difference(out, gaussianReference(sChart, c.sigma, c.rx, c.ry));
        EXPECT_LE(d.max, 2);
        EXPECT_LT(d.mean, 0.5);
        EXPECT_GT(difference(out, sChart).mean, 2.0) << "nothing was blurred";
    }
}

}  // namespace

namespace {

// A filter marked as keeping alpha (its quad is then drawn without blending
// when the picture is opaque) hands every alpha value on as it came in, at
// its defaults and with every uniform pushed elsewhere.
TEST_F(FilterMedia, FiltersThatKeepAlphaHandItOnUnderAnySettings) {
    Image faded = sChart;
    for (int y = 0; y < H; ++y) {
        for (int x = 0; x < W; ++x) {
            RGBA c = faded.at(x, y);
            c.a = static_cast<uint8_t>(x * 255 / (W - 1));
            faded.set(x, y, c);
        }
    }
    sHarness->setInput(faded);
    int marked = 0;
    for (int i = 0; i < MVNFilterCatalogue::count(); ++i) {
        const MVNFilterCatalogueEntry& entry = MVNFilterCatalogue::at(i);
        if (!entry.keepsAlpha) continue;
        ++marked;
        SCOPED_TRACE(entry.name);
        Uniforms defaults, pushed;
        for (int u = 0; u < entry.uniformCount; ++u) {
            float v = static_cast<float>(entry.uniforms[u].fallback);
            defaults.emplace_back(entry.uniforms[u].name, v);
            pushed.emplace_back(entry.uniforms[u].name, v * 0.5f + 0.37f);
        }
        for (const Uniforms* uniforms : {&defaults, &pushed}) {
            Image out = sHarness->render(entry.name, *uniforms);
            ASSERT_FALSE(out.rgba.empty());
            int worst = 0;
            for (size_t p = 3; p < out.rgba.size(); p += 4) {
                worst = std::max(worst, std::abs(int(out.rgba[p]) - int(faded.rgba[p])));
            }
            EXPECT_LE(worst, 1) << (uniforms == &defaults ? "defaults" : "pushed");
        }
    }
    sHarness->setInput(sChart);
    EXPECT_EQ(marked, 70);
}

}  // namespace
