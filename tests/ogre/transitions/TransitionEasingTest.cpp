// Easing of a transition's progress, and the uniforms a .glsl transition
// file declares with their defaults. Reference values of the curves are the
// CSS timing functions, computed to five places independently.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "transitions/MVNTransitionEasing.h"
#include "transitions/MVNTransitionGlslFile.h"

using namespace Morvane;

namespace {

struct Curve {
    const char* text;
    std::vector<float> expected;  // at 0.1, 0.25, 0.5, 0.75, 0.9
};

class TransitionEasingCurve : public ::testing::TestWithParam<Curve> {};

TEST_P(TransitionEasingCurve, MatchesTheTimingFunctionAndKeepsTheEnds) {
    MVNTransitionEasing easing;
    ASSERT_TRUE(easing.parse(GetParam().text));
    const float at[] = {0.1f, 0.25f, 0.5f, 0.75f, 0.9f};
    for (size_t i = 0; i < 5; ++i) {
        EXPECT_NEAR(easing.apply(at[i]), GetParam().expected[i], 1e-4) << GetParam().text << " at " << at[i];
    }
    EXPECT_EQ(easing.apply(0.0f), 0.0f);
    EXPECT_EQ(easing.apply(1.0f), 1.0f);
}

INSTANTIATE_TEST_SUITE_P(
    Curves, TransitionEasingCurve,
    ::testing::Values(Curve{"linear", {0.1f, 0.25f, 0.5f, 0.75f, 0.9f}},
                      Curve{"ease-in", {0.01703f, 0.09346f, 0.31536f, 0.62186f, 0.83943f}},
                      Curve{"ease-out", {0.16057f, 0.37814f, 0.68464f, 0.90654f, 0.98297f}},
                      Curve{"ease-in-out", {0.01972f, 0.12916f, 0.5f, 0.87084f, 0.98028f}},
                      Curve{"cubic-bezier(0.25,0.1,0.25,1)", {0.0948f, 0.40851f, 0.8024f, 0.96046f, 0.99432f}},
                      // y outside 0..1 overshoots, as a "back" easing does.
                      Curve{"cubic-bezier( 0.5, -0.5, 0.5, 1.5 )", {-0.07076f, -0.03821f, 0.5f, 1.03821f, 1.07076f}}));

TEST(TransitionEasing, TextsThatNameNoCurveFallBackToLinear) {
    for (const char* text : {"bounce", "ease_in", "cubic-bezier(1.5,0,0.5,1)", "cubic-bezier(0.1,0.2,0.3)",
                             "cubic-bezier(0.1,0.2,0.3,0.4) extra", "EASE-IN"}) {
        MVNTransitionEasing easing;
        EXPECT_FALSE(easing.parse(text)) << text;
        EXPECT_TRUE(easing.isLinear()) << text;
        EXPECT_FLOAT_EQ(easing.apply(0.3f), 0.3f) << text;
    }
}

TEST(TransitionGlslFile, UniformDefaultsComeFromTheirComments) {
    const std::string source = R"(
uniform float amplitude; // = 30.0
uniform vec2 direction; // = vec2(1.0, -0.5)
uniform vec3 tint;// =vec3(0.5)
uniform int steps; // = 4
uniform bool smooth; // = true
uniform float noDefault;
uniform vec4 wrongCount; // = vec4(1.0, 2.0)
vec4 transition(vec2 uv) { return getToColor(uv); }
)";
    std::vector<MVNTransitionGlslFile::Uniform> uniforms = MVNTransitionGlslFile::parseUniforms(source);
    ASSERT_EQ(uniforms.size(), 5u);
    EXPECT_EQ(uniforms[0].name, "amplitude");
    EXPECT_EQ(uniforms[0].value, (std::vector<float>{30.0f}));
    EXPECT_EQ(uniforms[1].name, "direction");
    EXPECT_EQ(uniforms[1].value, (std::vector<float>{1.0f, -0.5f}));
    EXPECT_EQ(uniforms[2].name, "tint");
    EXPECT_EQ(uniforms[2].value, (std::vector<float>{0.5f, 0.5f, 0.5f}));
    EXPECT_EQ(uniforms[3].type, "int");
    EXPECT_EQ(uniforms[3].value, (std::vector<float>{4.0f}));
    EXPECT_EQ(uniforms[4].type, "bool");
    EXPECT_EQ(uniforms[4].value, (std::vector<float>{1.0f}));
}

}  // namespace
