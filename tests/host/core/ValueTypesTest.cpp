// Geometry and colour values: their string forms travel through properties
// and project files, so the exact texts and refusals are the format.
#include <gtest/gtest.h>

#include <set>
#include <string>
#include <thread>
#include <vector>

#include "core/MVNBase.h"
#include "core/MVNByteBuffer.h"
#include "core/MVNColor4B.h"
#include "core/MVNGeneratorStringId.h"
#include "core/MVNPoint.h"
#include "core/MVNRect.h"
#include "core/MVNSize.h"

using namespace Morvane;

namespace {

// ---- MVNRect string forms -------------------------------------------------

struct RectParse {
    const char* text;
    bool accepted;
    MVNRect expected;  // value after the call; a refusal keeps (9, 9, 9, 9)
};

class RectFromString : public ::testing::TestWithParam<RectParse> {};

TEST_P(RectFromString, ReadsFieldsOrRefusesAndKeepsValue) {
    const RectParse& p = GetParam();
    MVNRect r(9, 9, 9, 9);
    EXPECT_EQ(p.accepted, r.fromString(p.text)) << p.text;
    EXPECT_TRUE(r.equals(p.expected)) << p.text << " gave " << r.toString();
    MVNRect byStatic = MVNRect::strToRect(p.text);
    EXPECT_TRUE(byStatic.equals(p.accepted ? p.expected : MVNRect())) << p.text;
}

INSTANTIATE_TEST_SUITE_P(
    Texts, RectFromString,
    ::testing::Values(RectParse{"[1:2 3x4]", true, {1, 2, 3, 4}},
                      RectParse{"[-1.5:2.25 640x360]", true, {-1.5f, 2.25f, 640, 360}},
                      // A short scan is accepted; what it did not find is 0.
                      // A width of 0 before the 'x' is not a hexadecimal number.
                      RectParse{"[1:2 0x360]", true, {1, 2, 0, 360}},
                      RectParse{"[1:2]", true, {1, 2, 0, 0}}, RectParse{"[abc]", true, {0, 0, 0, 0}},
                      RectParse{"1:2 3x4]", false, {9, 9, 9, 9}}, RectParse{"", false, {9, 9, 9, 9}},
                      RectParse{" [1:2 3x4]", false, {9, 9, 9, 9}},
                      // Numbers that place nothing anywhere are refused.
                      RectParse{"[nan:nan 10x10]", false, {9, 9, 9, 9}},
                      RectParse{"[0:0 infxinf]", false, {9, 9, 9, 9}},
                      RectParse{"[0:0 10x-inf]", false, {9, 9, 9, 9}},
                      RectParse{"[1e39:0 10x10]", false, {9, 9, 9, 9}}));

TEST(Rect, ToStringHasSixDecimalsAndReadsBack) {
    EXPECT_EQ("[-0.500000:0.000000 1920.000000x1080.000000]", MVNRect(-0.5f, 0, 1920, 1080).toString());
    MVNRect r(12.5f, -3.25f, 100.75f, 0.125f);
    EXPECT_TRUE(MVNRect::strToRect(r.toString()).equals(r));
}

// Points and sizes follow the rectangle's rules: a short scan leaves 0, a
// refusal keeps the value, and "0x" before a number is no hexadecimal prefix.
TEST(PointAndSize, ReadTheirBracketFormOrRefuseAndKeepTheValue) {
    MVNPoint pt(9, 9);
    EXPECT_TRUE(pt.fromString("[-3.5:0.25]"));
    EXPECT_TRUE(pt.equals(MVNPoint(-3.5f, 0.25f)));
    EXPECT_TRUE(pt.fromString("[7]"));
    EXPECT_TRUE(pt.equals(MVNPoint(7, 0)));
    EXPECT_FALSE(pt.fromString("1:2]"));
    EXPECT_TRUE(pt.equals(MVNPoint(7, 0)));
    EXPECT_TRUE(MVNPoint::strToPoint("").equals(MVNPoint()));
    MVNSize sz(9, 9);
    EXPECT_TRUE(sz.fromString("[0x100]"));
    EXPECT_TRUE(sz.equals(MVNSize(0, 100)));
    EXPECT_FALSE(sz.fromString("1920x1080"));
    EXPECT_TRUE(sz.equals(MVNSize(0, 100)));
    EXPECT_TRUE(MVNSize::strToSize("[0.5x2]").equals(MVNSize(0.5f, 2)));
    EXPECT_EQ("[1.000000:-2.500000]", MVNPoint(1, -2.5f).toString());
    EXPECT_EQ("[1920.000000x1080.000000]", MVNSize(1920, 1080).toString());
}

// ---- MVNColor4B -----------------------------------------------------------

struct ColorParse {
    const char* text;
    bool accepted;
    MVNColor4B expected;  // a refusal keeps (1, 2, 3, 4)
};

class ColorFromString : public ::testing::TestWithParam<ColorParse> {};

TEST_P(ColorFromString, ReadsFourHexPairsOrRefusesAndKeepsValue) {
    const ColorParse& p = GetParam();
    MVNColor4B c(1, 2, 3, 4);
    EXPECT_EQ(p.accepted, c.fromString(p.text)) << p.text;
    EXPECT_EQ(p.expected, c) << p.text << " gave " << c.toString();
    EXPECT_EQ(p.accepted ? p.expected : MVNColor4B(0, 0, 0, 1), MVNColor4B::strToColor4B(p.text)) << p.text;
}

INSTANTIATE_TEST_SUITE_P(
    Texts, ColorFromString,
    ::testing::Values(ColorParse{"#ff000080", true, {255, 0, 0, 128}}, ColorParse{"#0A0b0C0d", true, {10, 11, 12, 13}},
                      // Six digits without alpha are refused, not read as opaque.
                      ColorParse{"#ff0000", false, {1, 2, 3, 4}}, ColorParse{"#ff0000800", false, {1, 2, 3, 4}},
                      ColorParse{"#gg000080", false, {1, 2, 3, 4}}, ColorParse{"", false, {1, 2, 3, 4}}));

TEST(Color4B, ToStringIsLowerHexInRgbaOrderAndTheDefaultAlphaIsOne) {
    EXPECT_EQ("#0a0b0c0d", MVNColor4B(10, 11, 12, 13).toString());
    EXPECT_EQ("#00000001", MVNColor4B().toString()) << "the default alpha is 1, not 255";
    EXPECT_EQ(MVNColor4B(1, 2, 254, 255), MVNColor4B(MVNColor4B(1, 2, 254, 255).toString()));
}

// ---- MVNRect geometry -----------------------------------------------------

TEST(Rect, ContainsIsInclusiveOnAllSides) {
    MVNRect r(10, 20, 30, 40);
    EXPECT_TRUE(r.containsPoint(10, 20));
    EXPECT_TRUE(r.containsPoint(40, 60));
    EXPECT_FALSE(r.containsPoint(9.99f, 30));
    EXPECT_FALSE(r.containsPoint(25, 60.01f));
    EXPECT_TRUE(r.containsRect(MVNRect(10, 20, 1, 40)));
    EXPECT_FALSE(r.containsRect(MVNRect(10, 20, 31, 40)));
}

TEST(Rect, TouchingRectanglesIntersect) {
    MVNRect r(0, 0, 10, 10);
    EXPECT_TRUE(r.intersectsRect(MVNRect(10, 0, 5, 5)));   // shares the right edge
    EXPECT_TRUE(r.intersectsRect(MVNRect(-5, 10, 5, 5)));  // shares one corner
    EXPECT_FALSE(r.intersectsRect(MVNRect(10.5f, 0, 5, 5)));
    EXPECT_FALSE(r.intersectsRect(MVNRect(0, -6, 5, 5)));
}

TEST(Rect, BottomIsYBecauseRectanglesGrowUpward) {
    MVNRect r(1, 2, 3, 4);
    EXPECT_FLOAT_EQ(2, r.bottom());
    EXPECT_FLOAT_EQ(6, r.getMaxY());
    EXPECT_TRUE(r.center().equals(MVNPoint(2.5f, 4)));
}

TEST(Rect, EqualsToleratesOnlyFloatEpsilon) {
    MVNRect r(1, 2, 3, 4);
    EXPECT_TRUE(r.equals(MVNRect(1, 2, 3, 4)));
    EXPECT_FALSE(r.equals(MVNRect(1, 2, 3, 4.001f)));
    EXPECT_TRUE(MVNRect().isEmpty());
    EXPECT_FALSE(MVNRect(0, 0, 0, 1e-3f).isEmpty());
}

TEST(Rect, AbsToRelMapsToMinusOneToOneAndTreatsZeroSideAsOne) {
    MVNRect rel = MVNRect(0, 0, 1920, 1080).absToRel(1920, 1080);
    EXPECT_TRUE(rel.equals(MVNRect(-1, -1, 2, 2))) << rel.toString();
    rel = MVNRect(480, 270, 960, 540).absToRel(1920, 1080);
    EXPECT_TRUE(rel.equals(MVNRect(-0.5f, -0.5f, 1, 1))) << rel.toString();
    rel = MVNRect(1, 2, 3, 4).absToRel(0, 0);
    EXPECT_TRUE(rel.equals(MVNRect(1, 3, 6, 8))) << rel.toString();
}

TEST(Rect, ProfileToWorldCentresAndLeftBottomToLeftTopFlips) {
    EXPECT_TRUE(MVNRect(0, 0, 1920, 1080).profileToWorld(1920, 1080).equals(MVNRect(-960, -540, 1920, 1080)));
    // A 10 high strip at the bottom of a 100 high area is at the top's 90.
    EXPECT_TRUE(MVNRect(5, 0, 20, 10).leftBottomToLeftTop(999, 100).equals(MVNRect(5, 90, 20, 10)));
}

// ---- MVNPoint arithmetic --------------------------------------------------

TEST(Point, NormalizeOfZeroIsUnitX) {
    EXPECT_TRUE(MVNPoint().normalize().equals(MVNPoint(1, 0)));
    MVNPoint n = MVNPoint(3, 4).normalize();
    EXPECT_FLOAT_EQ(0.6f, n.x);
    EXPECT_FLOAT_EQ(0.8f, n.y);
    EXPECT_FLOAT_EQ(5, MVNPoint(3, 4).getLength());
}

// ---- Ids ------------------------------------------------------------------

TEST(Base, EachObjectGetsADistinctIdAndCopiesKeepIt) {
    MVNByteBuffer a(4, 7);
    MVNByteBuffer b;
    EXPECT_NE(a.id(), b.id());
    EXPECT_NE(0u, a.id());
    MVNByteBuffer c(a);
    EXPECT_EQ(a.id(), c.id());
    EXPECT_NE(a.ptr(), c.ptr());
    EXPECT_EQ(7, c.ptr()[3]);
    b = a;
    EXPECT_EQ(a.id(), b.id());
}

TEST(ByteBuffer, ResizeNeverShrinksStorageAndRefusesNegative) {
    MVNByteBuffer buf(100, 0xAB);
    EXPECT_EQ(0, buf.resize(10));
    EXPECT_EQ(10, buf.size());
    EXPECT_EQ(100, buf.bufferSize());
    EXPECT_EQ(0xAB, buf.ptr()[99]);
    EXPECT_EQ(-1, buf.resize(-1));
    EXPECT_EQ(10, buf.size());
    EXPECT_EQ(0, buf.resize(300));
    EXPECT_EQ(300, buf.bufferSize());
    EXPECT_EQ(0xAB, buf.ptr()[0]);  // growth keeps the bytes
}

TEST(GeneratorStringId, IdsAreUniqueAcrossThreadsAndKeepThePrefix) {
    constexpr int kThreads = 8;
    constexpr int kPerThread = 2000;
    std::vector<std::vector<std::string>> made(kThreads);
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([t, &made] {
            // Prefixes that end in digits must not collide with others.
            const std::string prefix = t % 2 ? "tex1" : "tex";
            for (int i = 0; i < kPerThread; ++i) {
                made[t].push_back(MVNGeneratorStringId::getSingleton()->genStringId(prefix));
            }
        });
    }
    for (auto& th : threads) th.join();
    std::set<std::string> all;
    for (int t = 0; t < kThreads; ++t) {
        for (const std::string& id : made[t]) {
            EXPECT_EQ(0u, id.rfind(t % 2 ? "tex1" : "tex", 0)) << id;
            all.insert(id);
        }
    }
    EXPECT_EQ(static_cast<size_t>(kThreads * kPerThread), all.size());
}

}  // namespace
