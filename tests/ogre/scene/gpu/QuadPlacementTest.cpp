// Quads of the shared scene land where the profile geometry says, stack by
// z-order whatever their depth and turn about their centre; a colour clip
// whose "anim" names a type moves by it, frame by frame, through its quad.
// Pictures are read back through the render system's reader.
#include <gtest/gtest.h>

#include <memory>

#include "core/MVNFrame.h"
#include "engine/MVNOgreMultisampleChoice.h"
#include "scene/MVNOgreRenderTexture.h"
#include "producers/MVNProducerColor.h"
#include "timeline/MVNFactory.h"
#include "services/MVNProducer.h"
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

// A picture shown at its own size stands on whole pixels at any depth: a
// quad a fraction of a pixel too large would show as a part-covered pixel
// (magenta mixed in) beyond its edges and as neighbouring texels mixed
// within it. The picture is a one-pixel checker in red (any mixing shows at
// once) over gradients in green and blue that tell off-by-one placement.
class PictureOnWholePixels : public QuadEngineTest, public ::testing::WithParamInterface<int> {
protected:
    static RGBA texel(int x, int y) {
        return RGBA{static_cast<uint8_t>((x + y) % 2 ? 255 : 0), static_cast<uint8_t>(x), static_cast<uint8_t>(y * 3),
                    255};
    }
};

TEST_P(PictureOnWholePixels, CoversExactlyItsPixelsAndNeedsNoMultisampling) {
    const int zOrder = GetParam();
    const int w = 300, h = 160, x = 11, y = 7;  // profile pixels, bottom-left origin
    BgraPicture picture(w, h, kBlack);
    for (int j = 0; j < h; ++j) {
        for (int i = 0; i < w; ++i) picture.paint(i, j, 1, 1, texel(i, j));
    }
    auto texture = std::make_unique<MVNOgreRenderTexture>("", w, h, W, H, zOrder, "");
    texture->setGeometry(MVNRect(x, y, w, h));
    texture->updateTexture(picture.data(), w, h);
    Composition out(W, H);
    ASSERT_TRUE(out.ok());
    out.save("whole_pixels_z" + std::to_string(zOrder));
    int wrongInside = 0, wrongOutside = 0, worst = 0;
    for (int py = 0; py < H; ++py) {
        for (int px = 0; px < W; ++px) {
            bool in = px >= x && px < x + w && py >= y && py < y + h;
            // Picture rows run from the top, profile rows from the bottom.
            RGBA wanted = in ? texel(px - x, y + h - 1 - py) : kMagenta;
            int d = maxColourDifference(out.at(px, py), wanted);
            worst = std::max(worst, d);
            if (d > 0) ++(in ? wrongInside : wrongOutside);
        }
    }
    EXPECT_EQ(wrongInside, 0) << "texels mixed inside the picture; largest difference " << worst;
    EXPECT_EQ(wrongOutside, 0) << "pixels around the picture touched; largest difference " << worst;

    bool needed = true;
    onRenderThread([&needed]() {
        auto* context = Morvane::MVNOgreManager::getSingleton()->getOgreContext();
        needed = MVNOgreMultisampleChoice::needed(context->getSceneManager(), context->getCamera(), W, H);
    });
    EXPECT_FALSE(needed) << "a picture on whole pixels asks for multisampling";
}

// The same picture at half size shown across the same pixels stays
// filtered: every other pixel falls between two texels of the checker and
// mixes them, where nearest sampling would double each texel.
TEST_F(PictureOnWholePixels, APictureShownLargerThanItsSizeIsStillFiltered) {
    const int w = 150, h = 80;
    BgraPicture picture(w, h, kBlack);
    for (int j = 0; j < h; ++j) {
        for (int i = 0; i < w; ++i) picture.paint(i, j, 1, 1, texel(i, j));
    }
    auto texture = std::make_unique<MVNOgreRenderTexture>("", w, h, W, H, 2, "");
    texture->setGeometry(MVNRect(11, 7, 2 * w, 2 * h));
    texture->updateTexture(picture.data(), w, h);
    Composition out(W, H);
    ASSERT_TRUE(out.ok());
    int mixed = 0;
    for (int px = 12; px < 11 + 2 * w - 1; ++px) {
        int red = out.at(px, 90).r;
        mixed += red > 32 && red < 224;
    }
    EXPECT_GT(mixed, w / 2) << "a doubled picture is sampled texel by texel";
}

INSTANTIATE_TEST_SUITE_P(Depths, PictureOnWholePixels, ::testing::Values(1, 2, 5),
                         [](const ::testing::TestParamInfo<int>& info) { return "ZOrder" + std::to_string(info.param); });

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

class ClipAnimation : public QuadEngineTest {
protected:
    void TearDown() override {
        for (const std::string& id : ids_) MVNFactory::getSingleton()->destroyService(id);
        QuadEngineTest::TearDown();
    }

    // A green 100 x 60 clip in the middle of the profile, animated by `type`.
    MVNProducer* greenClip(int type) {
        MVNProperties props;
        props.setString("service", "ogre.color");
        props.setInt32("width", 100);
        props.setInt32("height", 60);
        props.setColor("color", MVNColor4B(0, 255, 0, 255));
        props.setInt32("anim", type);
        std::string id = MVNFactory::getSingleton()->createProducer(profile(), props);
        if (id.empty()) return nullptr;
        ids_.push_back(id);
        MVNProducer* clip = MVNFactory::getSingleton()->getProducerById(id);
        clip->setGeometry(MVNRect(110, 60, 100, 60));
        return clip;
    }

    static void show(MVNProducer* clip, int position) {
        MVNFrame* frame = nullptr;
        ASSERT_EQ(clip->getImage(position, &frame), 0);
        MVNFrame::pushBackPool(frame);
    }

    // Width of the green run through the middle row, and its height through
    // the middle column.
    static std::pair<int, int> greenExtent() {
        Composition out(W, H);
        EXPECT_TRUE(out.ok());
        int width = 0, height = 0;
        for (int x = 0; x < W; ++x) width += maxColourDifference(out.at(x, H / 2), kGreen) <= 8;
        for (int y = 0; y < H; ++y) height += maxColourDifference(out.at(W / 2, y), kGreen) <= 8;
        return {width, height};
    }

    std::vector<std::string> ids_;
};

// Scaling back starts at 75% and swells to 125% a quarter into its ten
// seconds (frame 62.5 of 250 at 25 fps), about its centre.
TEST_F(ClipAnimation, ScalingBackGrowsTheClipBetweenTwoFrames) {
    MVNProducer* clip = greenClip(3);
    ASSERT_NE(clip, nullptr);
    show(clip, 0);
    auto first = greenExtent();
    EXPECT_NEAR(first.first, 75, 2);
    EXPECT_NEAR(first.second, 45, 2);
    show(clip, 62);
    auto later = greenExtent();
    EXPECT_NEAR(later.first, 125, 2);
    EXPECT_NEAR(later.second, 75, 2);
    Composition out(W, H);
    ASSERT_TRUE(out.ok());
    EXPECT_EQ(out.at(W / 2, H / 2), kGreen);  // still about its centre
    EXPECT_EQ(out.at(5, 5), kMagenta);
}

// The turning animations go one degree per frame shown, each its own way: a
// corner above the clip's right end is reached only by the clockwise one.
TEST_F(ClipAnimation, TurningClipsTurnTheirOwnWay) {
    for (int type : {1, 2}) {
        MVNProducer* clip = greenClip(type);
        ASSERT_NE(clip, nullptr);
        for (int position = 0; position < 30; ++position) show(clip, position);
        Composition out(W, H);
        ASSERT_TRUE(out.ok());
        // Thirty degrees about (160, 90): the right end of the clip rises
        // (anticlockwise) or sinks (clockwise).
        RGBA upperRight = out.at(195, 118);
        RGBA lowerRight = out.at(195, 62);
        if (type == 2) {
            EXPECT_EQ(upperRight, kGreen);
            EXPECT_EQ(lowerRight, kMagenta);
        } else {
            EXPECT_EQ(upperRight, kMagenta);
            EXPECT_EQ(lowerRight, kGreen);
        }
        clip->setVisible(false);
    }
}

}  // namespace
