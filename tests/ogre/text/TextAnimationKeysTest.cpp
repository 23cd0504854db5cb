// The key-frame tables of text animations, without an engine: keys at equal
// times merge where the table says so, and a second start time of 1 keeps
// the text standing to the end.
#include <gtest/gtest.h>

#include <algorithm>

#include "text/TextAnimationKeys.h"

using namespace Morvane;

namespace {

struct Clip {
    TextObjInfo obj;
    FontInfo font;
    Clip() {
        obj.canvasWidth = 320, obj.canvasHeight = 180;
        obj.actualMaxWidth = 100, obj.actualMaxHeight = 30, obj.maxAdvance = 20;
        font.zOrder = 2, font.playTime = 2;
        font.startTime = 0.2f, font.endTime = 0.8f, font.firstEndTime = 0.4f, font.secendStartTime = 0.6f;
        font.alpha = 0.8f;
    }
};

TEST(TextAnimationKeys, KeysAtEqualTimesMergeWithTheLastWinningOnlyInTheOrderedTables) {
    Clip s;
    s.font.secendStartTime = s.font.firstEndTime;  // the pause lasts no time
    // Ordered table: the two pause keys become one.
    TextAnimationKeys down = TextAnimationKeys::build(3, s.obj, s.font, 0);
    ASSERT_EQ(down.node.size(), 3u);
    EXPECT_FLOAT_EQ(down.node[1].time, 0.8f);
    // Start and first end at one time: the first end's place (the middle)
    // replaces the start's (outside on the left).
    s.font.startTime = s.font.firstEndTime;
    TextAnimationKeys left = TextAnimationKeys::build(1, s.obj, s.font, 0);
    for (size_t i = 1; i < left.node.size(); ++i) EXPECT_LT(left.node[i - 1].time, left.node[i].time);
    auto at = std::find_if(left.node.begin(), left.node.end(), [](const auto& k) { return k.time == 0.8f; });
    ASSERT_NE(at, left.node.end());
    EXPECT_FLOAT_EQ(at->translate[0], 0);
    // Unordered table: both spin keys stay.
    TextAnimationKeys spin = TextAnimationKeys::build(22, s.obj, s.font, 0);
    EXPECT_EQ(spin.node.size(), 9u);
}

struct Ending {
    unsigned type;
    bool stands;  // with a second start of 1 the text ends in place
};

class TextAnimationEnding : public ::testing::TestWithParam<Ending> {};

// The last key of each track, with a second start time of 1.
TEST_P(TextAnimationEnding, ASecondStartOfOneKeepsThePauseTypesStandingToTheEnd) {
    Clip s;
    s.font.secendStartTime = 1;
    const Ending e = GetParam();
    TextAnimationKeys k = TextAnimationKeys::build(e.type, s.obj, s.font, 7);
    ASSERT_FALSE(k.name.empty());
    bool inPlace = true;
    if (!k.node.empty()) {
        const TextAnimationKeys::NodeKey& last = k.node.back();
        inPlace = last.translate[0] == 0 && last.translate[1] == 0 && last.scale[0] == 1 && last.scale[1] == 1 &&
                  (!last.rotated || last.degrees == 0);
        // Keys past the end of the clip are never reached.
        if (last.time > s.font.playTime + 0.005f && k.node.size() > 1) inPlace = false;
    }
    if (!k.values.empty()) {
        const float full = k.value == TextAnimationKeys::Print ? 7.0f : s.font.alpha;
        inPlace = inPlace && k.values.back().value == full;
    }
    EXPECT_EQ(inPlace, e.stands) << k.name;
}

INSTANTIATE_TEST_SUITE_P(
    Types, TextAnimationEnding,
    ::testing::Values(Ending{1, true}, Ending{2, true}, Ending{3, true}, Ending{4, true}, Ending{5, false},
                      Ending{6, false}, Ending{7, false}, Ending{8, false}, Ending{9, false}, Ending{10, true},
                      Ending{11, false}, Ending{12, false}, Ending{13, true}, Ending{14, true}, Ending{15, false},
                      Ending{20, false}, Ending{21, false}, Ending{22, false}, Ending{23, true}, Ending{24, false},
                      Ending{28, false}),
    [](const ::testing::TestParamInfo<Ending>& info) { return "Type" + std::to_string(info.param.type); });

TEST(TextAnimationKeys, EveryTypeHasANameAndMaterialEffectsNameTheirProgram) {
    Clip s;
    int materials = 0;
    for (unsigned type = 1; type <= 30; ++type) {
        TextAnimationKeys k = TextAnimationKeys::build(type, s.obj, s.font, 3);
        EXPECT_FALSE(k.name.empty()) << type;
        if (k.material) {
            ++materials;
            EXPECT_EQ(k.name.substr(k.name.size() - 3), "_FP") << type;
            EXPECT_TRUE(k.node.empty() && k.values.empty()) << type;
        } else {
            EXPECT_TRUE(k.nodeTrack || k.value != TextAnimationKeys::None) << type;
        }
    }
    EXPECT_EQ(materials, 9);
    EXPECT_TRUE(TextAnimationKeys::build(0, s.obj, s.font, 3).name.empty());
    EXPECT_TRUE(TextAnimationKeys::build(31, s.obj, s.font, 3).name.empty());
}

}  // namespace
