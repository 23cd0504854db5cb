// The profile <-> render window <-> world conversions agree with each other:
// a 16:9 profile in a wider-than-tall 16:10 window and in a portrait window.
#include <gtest/gtest.h>

#include <cmath>

#include "core/MVNGeometry.h"

using namespace Morvane;

namespace {

struct Window {
    const char* name;
    int profileW, profileH, screenW, screenH;
    // Where the whole profile lies in the window, bottom-left origin.
    float fitX, fitY, fitW, fitH;
};

class GeometryInWindow : public ::testing::TestWithParam<Window> {};

void expectRect(const MVNRect& r, float x, float y, float w, float h) {
    EXPECT_NEAR(r.x, x, 1e-3);
    EXPECT_NEAR(r.y, y, 1e-3);
    EXPECT_NEAR(r.width, w, 1e-3);
    EXPECT_NEAR(r.height, h, 1e-3);
}

}  // namespace

TEST_P(GeometryInWindow, WholeProfileFillsTheFittedAreaCentredAndQuartersKeepTheirPlace) {
    const Window& c = GetParam();
    MVNRect whole(0, 0, static_cast<float>(c.profileW), static_cast<float>(c.profileH));
    expectRect(convertGeometryProfileToScreen(whole, c.profileW, c.profileH, c.screenW, c.screenH), c.fitX, c.fitY,
               c.fitW, c.fitH);
    expectRect(convertGeometryProfileToWorld2(whole, c.profileW, c.profileH, c.screenW, c.screenH), -c.fitW / 2,
               -c.fitH / 2, c.fitW, c.fitH);
    // Bottom-left origin: the top-right quarter starts at half width, half height.
    MVNRect quarter(c.profileW / 2.0f, c.profileH / 2.0f, c.profileW / 2.0f, c.profileH / 2.0f);
    expectRect(convertGeometryProfileToWorld2(quarter, c.profileW, c.profileH, c.screenW, c.screenH), 0, 0,
               c.fitW / 2, c.fitH / 2);
    EXPECT_EQ(convertFontSizeProfileToScreen(40, c.profileW, c.profileH, c.screenW, c.screenH),
              static_cast<int>(std::lround(40 * c.fitW / c.profileW)));
    EXPECT_GE(convertFontSizeProfileToScreen(1, c.profileW, c.profileH, c.screenW, c.screenH), 1);
}

TEST_P(GeometryInWindow, ProfileScreenProfileRoundTrips) {
    const Window& c = GetParam();
    const MVNRect rects[] = {MVNRect(0, 0, 1, 1), MVNRect(100, 50, 640, 360), MVNRect(-20, -10, 3000, 2000),
                             MVNRect(c.profileW - 7.5f, c.profileH - 3.25f, 7.5f, 3.25f)};
    for (const MVNRect& r : rects) {
        MVNRect s = convertGeometryProfileToScreen(r, c.profileW, c.profileH, c.screenW, c.screenH);
        expectRect(convertGeometryScreenToProfile(s, c.profileW, c.profileH, c.screenW, c.screenH), r.x, r.y, r.width,
                   r.height);
        // A point agrees with the rectangle's corner.
        MVNPoint p = convertPointScreenToProfile(MVNPoint(s.x, s.y), c.profileW, c.profileH, c.screenW, c.screenH);
        EXPECT_NEAR(p.x, r.x, 1e-3);
        EXPECT_NEAR(p.y, r.y, 1e-3);
        // The world is the screen moved to the window's centre.
        expectRect(convertGeometryProfileToWorld2(r, c.profileW, c.profileH, c.screenW, c.screenH),
                   s.x - c.screenW / 2.0f, s.y - c.screenH / 2.0f, s.width, s.height);
    }
}

INSTANTIATE_TEST_SUITE_P(
    Windows, GeometryInWindow,
    ::testing::Values(Window{"Same", 1920, 1080, 1920, 1080, 0, 0, 1920, 1080},
                      Window{"Wide16x10", 1920, 1080, 1920, 1200, 0, 60, 1920, 1080},
                      Window{"Portrait", 1920, 1080, 1080, 1920, 0, 656.25f, 1080, 607.5f},
                      Window{"Pillarbox", 960, 540, 1200, 540, 120, 0, 960, 540}),
    [](const ::testing::TestParamInfo<Window>& info) { return std::string(info.param.name); });

TEST(Geometry, BadSizesLeaveTheInputAlone) {
    MVNRect r(1, 2, 3, 4);
    EXPECT_TRUE(convertGeometryProfileToScreen(r, 0, 1080, 1920, 1080).equals(r));
    EXPECT_TRUE(convertGeometryScreenToProfile(r, 1920, 1080, 1920, -1).equals(r));
    EXPECT_TRUE(convertGeometryProfileToWorld2(r, 1920, 1080, 0, 0).equals(r));
    EXPECT_EQ(convertFontSizeProfileToScreen(30, 0, 0, 0, 0), 30);
}

TEST(AdjustSize, FillKeepsAspectAndTouchesTheBox) {
    MVNSize a = adjustSizeFill(MVNSize(100, 100), MVNSize(640, 540));
    EXPECT_FLOAT_EQ(a.width, 540);
    EXPECT_FLOAT_EQ(a.height, 540);
    MVNSize b = adjustSizeFill(MVNSize(1920, 1080), MVNSize(100, 100));
    EXPECT_FLOAT_EQ(b.width, 100);
    EXPECT_NEAR(b.height, 56.25f, 1e-4);
    EXPECT_TRUE(adjustSizeFill(MVNSize(0, 10), MVNSize(10, 10)).equals(MVNSize()));
    EXPECT_TRUE(adjustSizeFill(MVNSize(10, 10), MVNSize(10, 0)).equals(MVNSize()));
}

TEST(AdjustSize, ContainAlignShrinksOnlyAndRoundsToTheStep) {
    MVNSize a = adjustSizeContainAlign(MVNSize(1920, 1080), MVNSize(1000, 1000), 16);
    EXPECT_FLOAT_EQ(a.width, 992);  // 1000 rounded down to 16
    EXPECT_FLOAT_EQ(a.height, 560); // 562.5 rounded down to 16
    MVNSize b = adjustSizeContainAlign(MVNSize(100, 50), MVNSize(1280, 720), 1);
    EXPECT_FLOAT_EQ(b.width, 100);
    EXPECT_FLOAT_EQ(b.height, 50);
    MVNSize c = adjustSizeContainAlign(MVNSize(101, 51), MVNSize(1280, 720), 2);
    EXPECT_FLOAT_EQ(c.width, 100);
    EXPECT_FLOAT_EQ(c.height, 50);
    MVNSize d = adjustSizeContainAlign(MVNSize(3, 3), MVNSize(1280, 720), 16);
    EXPECT_FLOAT_EQ(d.width, 16) << "never below one step";
}
