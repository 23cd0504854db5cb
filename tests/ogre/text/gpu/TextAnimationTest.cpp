// Animated text clips as a host drives them, frame by frame: the clip's node
// in its track scene stands where the key frames put it at their times, and
// the composed picture shows the ink there; fades reach the background, not
// black; a print shows one more glyph at a time; the effect programs hide
// the text at the start and show it whole in the middle; editing shows the
// text whole whatever the animation.
#include <gtest/gtest.h>

#include <OgreAnimationState.h>
#include <OgreEntity.h>
#include <OgreRoot.h>
#include <OgreSceneManager.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <string>
#include <vector>

#include "LogCapture.h"
#include "QuadTestSupport.h"
#include "core/MVNFrame.h"
#include "timeline/MVNFactory.h"
#include "services/MVNProducer.h"

using namespace Morvane;
using namespace MorvaneTest;

namespace {

// Clips of 50 frames at 25 fps: T is 2 s. Start, first end, second start and
// end times of 0.2, 0.4, 0.6 and 0.8 fall on frames 10, 20, 30 and 40.
constexpr int kFrames = 50;
constexpr int kZ = 2;

// Ink: what the magenta background doesn't explain (its green is 0).
bool isInk(RGBA c) { return c.g >= 96; }

struct Ink {
    int count = 0;
    double cx = 0, cy = 0;  // centre, y from the top
};

class TextAnimation : public QuadEngineTest {
protected:
    void TearDown() override {
        for (const std::string& id : ids_) MVNFactory::getSingleton()->destroyService(id);
        QuadEngineTest::TearDown();
    }

    MVNProducer* make(int type, const std::string& text = "Hi", bool edit = false) {
        MVNProperties props;
        props.setString("service", "text");
        props.setString("textString", text);
        props.setInt32("textSize", 40);
        props.setInt32("zOrder", kZ);
        props.setInt32("out", kFrames - 1);
        props.setInt32("textAnimationType", type);
        props.setDouble("textAnimationStartTime", 0.2);
        props.setDouble("textAnimationEndTime", 0.8);
        props.setDouble("textAnimationFirstEndTime", 0.4);
        props.setDouble("textAnimationSecendStartTime", 0.6);
        std::string id = MVNFactory::getSingleton()->createProducer(profile(), props);
        if (id.empty()) return nullptr;
        ids_.push_back(id);
        MVNProducer* p = MVNFactory::getSingleton()->getProducerById(id);
        p->setBoolean("_textNeedReBuild", true);
        if (edit) p->setBoolean("_textEditStatus", true);
        return p;
    }

    static void show(MVNProducer* p, int frame) {
        MVNFrame* f = nullptr;
        if (p->getImage(frame, &f) == 0) MVNFrame::pushBackPool(f);
    }

    static Ink ink(const std::string& save = "") {
        Composition out(W, H);
        EXPECT_TRUE(out.ok());
        if (!save.empty()) out.save(save);
        Ink k;
        for (int y = 0; y < H; ++y)
            for (int x = 0; x < W; ++x)
                if (isInk(out.picture().at(x, y))) ++k.count, k.cx += x, k.cy += y;
        if (k.count > 0) k.cx /= k.count, k.cy /= k.count;
        return k;
    }

    struct Pose {
        Ogre::Vector3 position, scale;
        Ogre::Quaternion orientation;
        int visibleGlyphs = 0;
    };

    static Pose pose(MVNProducer* p) {
        Pose s;
        const std::string id = p->getString("TextGenStringId", "");
        onRenderThread([&] {
            Ogre::SceneManager* mgr = Ogre::Root::getSingleton().getSceneManager("_TextRttTrackMgr" + std::to_string(kZ));
            Ogre::SceneNode* node = mgr->getSceneNode("_TextRttIndexNode" + id);
            s.position = node->getPosition();
            s.scale = node->getScale();
            s.orientation = node->getOrientation();
            for (Ogre::Node* child : node->getChildren()) {
                Ogre::SceneNode* glyph = static_cast<Ogre::SceneNode*>(child);
                if (glyph->numAttachedObjects() > 0 && glyph->getAttachedObject(0)->getVisible()) ++s.visibleGlyphs;
            }
        });
        return s;
    }

    // The ink of the text standing whole, drawn through the track texture
    // like every animated clip: a linear zoom at rest after its first end.
    Ink wholeInk(const std::string& text) {
        MVNProducer* plain = make(13, text);
        if (plain == nullptr) return Ink();
        show(plain, 25);
        Ink k = ink();
        plain->resetRender(0);
        return k;
    }

    std::vector<std::string> ids_;
};

// Where the node stands at a frame. x and y are given as shares of the
// canvas and of the text (value = a * canvas + b * text + c), or as "off":
// the text lies wholly outside the picture on that side.
struct Expr {
    float canvas = 0, text = 0;
    bool off = false;
};
Expr at(float canvas, float text = 0) { return Expr{canvas, text, false}; }
const Expr kOffLow{-1, 0, true};   // left or below
const Expr kOffHigh{1, 0, true};   // right or above
const Expr kZero{};

struct Moment {
    int frame;
    Expr x, y;
    float sx = 1, sy = 1;
};

struct NodeCase {
    int type;
    std::vector<Moment> moments;
};

std::ostream& operator<<(std::ostream& os, const NodeCase& c) { return os << "type " << c.type; }

class TextNodeAnimation : public TextAnimation, public ::testing::WithParamInterface<NodeCase> {};

TEST_P(TextNodeAnimation, NodeStandsWhereTheKeysPutItAndTheInkFollows) {
    const NodeCase& c = GetParam();
    MVNProducer* clip = make(c.type);
    ASSERT_NE(clip, nullptr);
    show(clip, 0);
    const float w = static_cast<float>(clip->getDouble("_textActualMaxWidth", 0));
    const float h = static_cast<float>(clip->getDouble("_textActualMaxHeight", 0));
    ASSERT_GT(w, 0);
    Ink whole;
    for (const Moment& m : c.moments) {
        SCOPED_TRACE("frame " + std::to_string(m.frame));
        show(clip, m.frame);
        Pose p = pose(clip);
        auto check = [](const char* axis, float value, const Expr& e, float canvas, float text) {
            if (e.off) {
                // Wholly outside, and not further than a glyph's advance more.
                EXPECT_GE(value * e.canvas, canvas / 2 + text / 2 - 0.5f) << axis;
                EXPECT_LE(value * e.canvas, canvas / 2 + text / 2 + 60) << axis;
            } else {
                EXPECT_NEAR(value, e.canvas * canvas + e.text * text, 0.75f) << axis;
            }
        };
        check("x", p.position.x, m.x, W, w);
        check("y", p.position.y, m.y, H, h);
        EXPECT_NEAR(p.scale.x, m.sx, 0.01f);
        EXPECT_NEAR(p.scale.y, m.sy, 0.01f);
        const bool centred = !m.x.off && !m.y.off && m.x.canvas == 0 && m.x.text == 0 && m.y.canvas == 0 &&
                             m.y.text == 0 && m.sx == 1 && m.sy == 1;
        if (m.x.off || m.y.off || m.sx == 0 || m.sy == 0) {
            EXPECT_EQ(ink().count, 0) << "the text is out of the picture";
        } else if (centred && p.orientation.equals(Ogre::Quaternion::IDENTITY, Ogre::Degree(0.5))) {
            Ink k = ink();
            EXPECT_NEAR(k.cx, W / 2.0, 3);
            EXPECT_NEAR(k.cy, H / 2.0, 3);
            if (whole.count == 0) whole = k;
            else EXPECT_NEAR(k.count, whole.count, whole.count / 20) << "the text stands whole";
        }
    }
}

const NodeCase kNodeCases[] = {
    {1, {{0, kOffLow, kZero}, {10, kOffLow, kZero}, {20, kZero, kZero}, {30, kZero, kZero}, {40, kOffHigh, kZero}, {50, kOffHigh, kZero}}},
    {2, {{0, kOffHigh, kZero}, {20, kZero, kZero}, {30, kZero, kZero}, {50, kOffLow, kZero}}},
    {3, {{0, kZero, kOffHigh}, {20, kZero, kZero}, {30, kZero, kZero}, {50, kZero, kOffLow}}},
    {4, {{0, kZero, kOffLow}, {20, kZero, kZero}, {30, kZero, kZero}, {50, kZero, kOffHigh}}},
    {5, {{0, kOffLow, kZero}, {25, kZero, kZero}, {50, kOffHigh, kZero}}},
    {6, {{0, kOffHigh, kZero}, {25, kZero, kZero}, {50, kOffLow, kZero}}},
    // The end key lies 0.01 s past the end: at T the text is just short of it.
    {7, {{0, kZero, kOffLow}, {50, kZero, at(0.5f * 199 / 201, 0.5f * 199 / 201)}}},
    {8, {{0, kZero, kOffHigh}, {25, kZero, kZero}, {50, kZero, kOffLow}}},
    {11, {{0, kZero, kZero, 0, 0}, {20, kZero, kZero}, {50, kZero, kZero, 0.5f, 0.5f}}},
    {12, {{0, kZero, at(0.5f)}, {11, kZero, at(0, 1)}, {20, kZero, kZero}, {30, kZero, kZero}, {50, kZero, at(1)}}},
    {13, {{0, kZero, kZero, 0, 0}, {10, kZero, kZero, 0.5f, 0.5f}, {20, kZero, kZero}, {50, kZero, kZero}}},
    {14, {{0, kZero, kZero, 1.5f, 1.5f}, {10, kZero, kZero, 1.25f, 1.25f}, {20, kZero, kZero}, {50, kZero, kZero}}},
    {15, {{0, kZero, at(0.5f, 1), 1, 0.2f}, {20, kZero, kZero}, {30, kZero, kZero}, {50, kZero, at(1), 1, 0.25f}}},
    {20, {{0, kZero, kZero, 0.5f, 0.5f}, {20, kZero, kZero}, {50, kZero, kZero, 2, 2}}},
    {21, {{0, kZero, at(-0.5f, -1)}, {50, kZero, at(0.5f), 0.5f, 0.5f}}},
    {22, {{0, kZero, kZero, 3, 3}, {20, kZero, kZero}, {30, kZero, kZero}, {50, kZero, kZero, 3, 3}}},
    {24, {{0, kZero, kZero, 2, 1}, {20, kZero, kZero}, {30, kZero, kZero}, {50, kZero, kZero, 2, 1}}},
    // Enters from the left between the start (frame 10) and the end (40)
    // times, and leaves to the left.
    {28, {{0, at(-0.5f, -0.5f), kZero}, {10, at(-0.5f, -0.5f), kZero}, {22, kZero, kZero}, {28, kZero, kZero}, {40, at(-0.5f, -0.5f), kZero}}},
};

INSTANTIATE_TEST_SUITE_P(Types, TextNodeAnimation, ::testing::ValuesIn(kNodeCases),
                         [](const ::testing::TestParamInfo<NodeCase>& info) {
                             return "Type" + std::to_string(info.param.type);
                         });

// Fade in and out over magenta: at half alpha white ink is half way to the
// background (red stays full), never a grey on black.
TEST_F(TextAnimation, FadeReachesItsAlphaAtTheKeyTimesOverTheBackground) {
    MVNProducer* clip = make(9);
    ASSERT_NE(clip, nullptr);
    // Alpha: 0 until the start (frame 10), 1 from frame 10 + 0.4 * 30 = 22
    // to 10 + 0.6 * 30 = 28, 0 from the end (40).
    const struct {
        int frame;
        float alpha;
    } keys[] = {{0, 0}, {10, 0}, {16, 0.5f}, {22, 1}, {28, 1}, {34, 0.5f}, {40, 0}, {49, 0}};
    for (const auto& k : keys) {
        SCOPED_TRACE("frame " + std::to_string(k.frame));
        show(clip, k.frame);
        Composition out(W, H);
        ASSERT_TRUE(out.ok());
        // The commonest green of the ink (its inside: edges are fewer, and
        // overlapping contours of a glyph are rarer), and its least red.
        std::map<int, int> greens;
        int red = 255;
        for (int y = 0; y < H; ++y)
            for (int x = 0; x < W; ++x) {
                RGBA c = out.at(x, y);
                if (c.g > 16) ++greens[c.g / 4], red = std::min<int>(red, c.r);
            }
        int inside = 0, most = 0;
        for (const auto& g : greens)
            if (g.second > most) most = g.second, inside = g.first * 4 + 2;
        EXPECT_NEAR(inside, 255 * k.alpha, 6);
        if (k.alpha > 0) {
            EXPECT_GE(red, 245);
        }
    }
}

TEST_F(TextAnimation, PrintShowsOneMoreGlyphAtATimeThenTakesThemAway) {
    LogCapture log;
    MVNProducer* clip = make(10, "Hello");
    ASSERT_NE(clip, nullptr);
    EXPECT_GE(log.count(MVNLogLevel::Debug, "MVNTextEffect", "textPrint End mAnimTime"), 1);
    std::vector<int> counts;
    for (int frame = 0; frame < kFrames; ++frame) {
        show(clip, frame);
        counts.push_back(pose(clip).visibleGlyphs);
    }
    EXPECT_EQ(counts.front(), 0);
    EXPECT_EQ(counts[20], 5);
    EXPECT_EQ(counts[29], 5);
    for (int frame = 1; frame < kFrames; ++frame) {
        SCOPED_TRACE("frame " + std::to_string(frame));
        const int step = counts[frame] - counts[frame - 1];
        if (frame <= 20) {
            EXPECT_TRUE(step == 0 || step == 1) << step;
        }
        if (frame > 30) {
            EXPECT_TRUE(step == 0 || step == -1) << step;
        }
    }
    EXPECT_LE(counts.back(), 1);
    // The ink follows: frame 10 shows about half the word.
    show(clip, 10);
    const int half = ink().count;
    show(clip, 25);
    const int full = ink().count;
    EXPECT_GT(half, full / 5);
    EXPECT_LT(half, full * 4 / 5);
}

struct EffectCase {
    int type;
    int entering;  // a frame on the way in
};

class TextMaterialEffect : public TextAnimation, public ::testing::WithParamInterface<EffectCase> {};

// Hidden at the start, part of it on the way in, whole between the first end
// and the second start, (nearly) gone at the end. The timed wipes run inside
// the start and end times (frames 10 to 40).
TEST_P(TextMaterialEffect, HiddenAtTheStartWholeInTheMiddleGoneAtTheEnd) {
    const EffectCase c = GetParam();
    const int whole = wholeInk("Hello").count;
    ASSERT_GT(whole, 300);
    MVNProducer* clip = make(c.type, "Hello");
    ASSERT_NE(clip, nullptr);
    show(clip, 0);
    EXPECT_EQ(ink().count, 0) << "start";
    show(clip, c.entering);
    const int partial = ink().count;
    EXPECT_GT(partial, whole / 10) << "on the way in";
    EXPECT_LT(partial, whole * 9 / 10) << "on the way in";
    show(clip, 25);
    EXPECT_NEAR(ink().count, whole, whole / 50) << "middle";
    show(clip, 48);
    EXPECT_LT(ink().count, whole / 5) << "end";
}

// Entering frames: half way in for the wipes and sweeps; the doors that open
// from the middle are caught early, before they are wider than the word.
INSTANTIATE_TEST_SUITE_P(Types, TextMaterialEffect,
                         ::testing::Values(EffectCase{16, 10}, EffectCase{17, 10}, EffectCase{18, 10},
                                           EffectCase{19, 10}, EffectCase{25, 16}, EffectCase{26, 16},
                                           EffectCase{27, 11}, EffectCase{30, 11}),
                         [](const ::testing::TestParamInfo<EffectCase>& info) {
                             return "Type" + std::to_string(info.param.type);
                         });

// The cover colour fills the white ink from the left as the clip plays.
TEST_F(TextAnimation, KaraokeCoversTheInkFromTheLeftInItsColour) {
    MVNProducer* clip = make(29, "Hello");
    ASSERT_NE(clip, nullptr);
    clip->setColor("AnimTextKaLaOkCol", MVNColor4B(255, 0, 0, 255));
    auto covered = [](int* left, int* right) {
        Composition out(W, H);
        ASSERT_TRUE(out.ok());
        *left = *right = 0;
        for (int y = 0; y < H; ++y)
            for (int x = 0; x < W; ++x) {
                RGBA c = out.at(x, y);
                if (c.r > 200 && c.g < 60 && c.b < 60) ++(x < W / 2 ? *left : *right);
            }
    };
    int left = 0, right = 0;
    show(clip, 0);
    covered(&left, &right);
    EXPECT_EQ(left + right, 0);
    show(clip, kFrames / 2);
    covered(&left, &right);
    EXPECT_GT(left, 100);
    EXPECT_LT(right, left / 10);
    show(clip, kFrames - 1);
    covered(&left, &right);
    EXPECT_GT(right, 100);
    EXPECT_EQ(ink().count, 0) << "no white ink is left";
}

class TextEditing : public TextAnimation, public ::testing::WithParamInterface<int> {};

// While the host edits a clip, the text stands whole and still at any frame:
// the effect program is off, the node at rest, the alpha and glyphs full.
TEST_P(TextEditing, EditingShowsTheTextWholeAtAnyFrame) {
    const Ink whole = wholeInk("Hello");
    ASSERT_GT(whole.count, 300);
    MVNProducer* clip = make(GetParam(), "Hello", true);
    ASSERT_NE(clip, nullptr);
    for (int frame : {0, 45}) {
        SCOPED_TRACE("frame " + std::to_string(frame));
        show(clip, frame);
        Ink k = ink();
        EXPECT_NEAR(k.count, whole.count, whole.count / 50);
        EXPECT_NEAR(k.cx, whole.cx, 2);
    }
    // Back to playing, the animation takes over again.
    clip->setBoolean("_textEditStatus", false);
    show(clip, 0);
    EXPECT_EQ(ink().count, 0);
}

INSTANTIATE_TEST_SUITE_P(Types, TextEditing, ::testing::Values(5, 9, 10, 25));

}  // namespace
