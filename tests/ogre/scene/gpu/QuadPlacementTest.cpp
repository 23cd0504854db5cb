// Quads of the shared scene land where the profile geometry says, stack by
// z-order whatever their depth and turn about their centre.
// Pictures are read back through the render system's reader.
#include <gtest/gtest.h>

#include <memory>

#include "core/MVNFrame.h"
#include "scene/MVNOgreRenderTexture.h"
#include "producers/MVNProducerColor.h"
#include "QuadTestSupport.h"

using namespace Morvane;
using namespace MorvaneTest;

namespace {

// A colour clip of the profile's size shown at `rect`, its frame uploaded.
std::unique_ptr<MVNProducerColor> colourClip(const MVNProfile& profile, int zOrder, RGBA c, const MVNRect& rect) {
    std::unique_ptr<MVNProducerColor> clip(
        MVNProducerColor::create(profile, zOrder, profile.width(), profile.height(), MVNColor4B(c.r, c.g, c.b, c.a)));
    if (!clip) return clip;
    clip->setGeometry(rect);
    MVNFrame* frame = nullptr;
    if (clip->getImage(0, &frame) == 0) MVNFrame::pushBackPool(frame);
    return clip;
}

struct PlacementCase {
    const char* label;
    int x, y, w, h;  // profile pixels, bottom-left origin
    int zOrder;
};

std::ostream& operator<<(std::ostream& os, const PlacementCase& c) { return os << c.label; }

class ColourClipPlacement : public QuadEngineTest, public ::testing::WithParamInterface<PlacementCase> {};

TEST_P(ColourClipPlacement, CoversExactlyTheGeometryAndNothingElse) {
    const PlacementCase& c = GetParam();
    auto clip = colourClip(profile(), c.zOrder, kGreen, MVNRect(c.x, c.y, c.w, c.h));
    ASSERT_NE(clip, nullptr);
    Composition out(W, H);
    ASSERT_TRUE(out.ok());
    out.save(std::string("placement_") + c.label);
    EXPECT_EQ(out.countWrong(c.x, c.y, c.w, c.h, kGreen, kMagenta), 0);
}

INSTANTIATE_TEST_SUITE_P(Geometries, ColourClipPlacement,
                         ::testing::Values(PlacementCase{"TopRightCorner", 280, 160, 40, 20, 0},
                                           PlacementCase{"OffCentreOddSize", 37, 101, 63, 41, 0},
                                           PlacementCase{"AtZOrderThree", 100, 50, 120, 80, 3}),
                         [](const ::testing::TestParamInfo<PlacementCase>& info) { return info.param.label; });

using QuadStacking = QuadEngineTest;

TEST_F(QuadStacking, HigherZOrderIsDrawnOverLowerWhateverTheOrderOfCreation) {
    // The upper clip is made first, so that creation order can't explain
    // the result.
    auto upper = colourClip(profile(), 2, kGreen, MVNRect(100, 40, 120, 100));
    auto lower = colourClip(profile(), 1, kRed, MVNRect(60, 20, 120, 100));
    ASSERT_NE(upper, nullptr);
    ASSERT_NE(lower, nullptr);
    Composition out(W, H);
    ASSERT_TRUE(out.ok());
    out.save("stacking");
    EXPECT_EQ(out.at(150, 80), kGreen);   // where both lie
    EXPECT_EQ(out.at(70, 30), kRed);      // the lower alone
    EXPECT_EQ(out.at(210, 130), kGreen);  // the upper alone
    EXPECT_EQ(out.at(250, 160), kMagenta);

    // Swapping the z-orders swaps the overlap.
    upper->setInt32("zOrder", 1);
    lower->setInt32("zOrder", 2);
    upper->setGeometry(MVNRect(100, 40, 120, 101));  // the new depth takes effect with the geometry
    lower->setGeometry(MVNRect(60, 20, 120, 101));
    Composition swapped(W, H);
    ASSERT_TRUE(swapped.ok());
    EXPECT_EQ(swapped.at(150, 80), kRed);
}

using QuadRotation = QuadEngineTest;

TEST_F(QuadRotation, NinetyDegreesTurnsAWidePictureUprightCounterClockwise) {
    // 64 x 32, green with a red marker in its top-left corner.
    BgraPicture picture(64, 32, kGreen);
    picture.paint(0, 0, 8, 8, kRed);
    auto texture = std::make_unique<MVNOgreRenderTexture>("", 64, 32, W, H, 0, "");
    texture->setGeometry(MVNRect(128, 74, 64, 32));  // centred
    texture->updateTexture(picture.data(), 64, 32);
    texture->setRotation(90);
    Composition out(W, H);
    ASSERT_TRUE(out.ok());
    out.save("rotation_90");
    // Now 32 wide and 64 high about the same centre (160, 90).
    EXPECT_EQ(out.countWrong(144, 58, 32, 64, kGreen, kMagenta), 8 * 8);
    // The top-left corner went to the bottom left.
    EXPECT_EQ(out.at(145, 59), kRed);
    EXPECT_EQ(out.at(151, 65), kRed);
    EXPECT_EQ(out.at(145, 120), kGreen);

    // Applied again, the same angle doesn't turn any further; 0 turns back.
    texture->setRotation(90);
    {
        Composition again(W, H);
        EXPECT_EQ(again.countWrong(144, 58, 32, 64, kGreen, kMagenta), 8 * 8);
    }
    texture->setRotation(0);
    Composition back(W, H);
    EXPECT_EQ(back.countWrong(128, 74, 64, 32, kGreen, kMagenta), 8 * 8);
    EXPECT_EQ(back.at(128, 105), kRed);
}

}  // namespace
