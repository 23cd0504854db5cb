// The overlays in the frames that the reader brings back. Letterbox bars:
// when the profile and the render window differ in shape the picture is
// fitted into the window and the rest is covered black, exact rows and
// columns. On-screen labels: a half-transparent black panel with red text,
// where they are put.
#include <gtest/gtest.h>

#include "GpuTestSupport.h"
#include "LogCapture.h"
#include "engine/MVNOgreCoverLayer.h"
#include "engine/MVNOgreLabel.h"

using namespace Morvane;
using namespace MorvaneTest;

namespace {

struct BarCase {
    const char* name;
    int profileW, profileH, winW, winH;
    int barRows;     // black rows at the top and at the bottom
    int barColumns;  // black columns at the left and at the right
};

// Every pixel of a few columns and rows across the picture, against the bar
// layout: black inside a bar, the magenta background elsewhere.
void expectBars(const Picture& pic, int barRows, int barColumns) {
    int wrong = 0;
    auto check = [&](int x, int y) {
        bool inBar = y < barRows || y >= pic.height - barRows || x < barColumns || x >= pic.width - barColumns;
        RGBA expected = inBar ? kBlack : kMagenta;
        if (!(pic.at(x, y) == expected) && wrong++ < 5) {
            ADD_FAILURE() << "pixel (" << x << "," << y << ") is " << pic.at(x, y) << ", expected " << expected;
        }
    };
    for (int x : {0, barColumns - 1, barColumns, pic.width / 2, pic.width - barColumns - 1, pic.width - barColumns,
                  pic.width - 1}) {
        if (x >= 0 && x < pic.width)
            for (int y = 0; y < pic.height; ++y) check(x, y);
    }
    for (int y : {0, barRows - 1, barRows, pic.height / 2, pic.height - barRows - 1, pic.height - barRows,
                  pic.height - 1}) {
        if (y >= 0 && y < pic.height)
            for (int x = 0; x < pic.width; ++x) check(x, y);
    }
    EXPECT_EQ(wrong, 0);
}

class CoverBars : public ::testing::TestWithParam<BarCase> {
protected:
    Marker windowed{"not_full_screen"};
};

INSTANTIATE_TEST_SUITE_P(Layouts, CoverBars,
                         ::testing::Values(
                             // 1080 * 1080 / 1920 = 607 columns: (1920 - 607) / 2 = 656 each side.
                             BarCase{"portrait_in_wide", 1080, 1920, 1920, 1080, 0, 656},
                             // 90 of 120 rows: 15 black rows above and below.
                             BarCase{"small_letterbox", 160, 90, 160, 120, 15, 0}),
                         [](const ::testing::TestParamInfo<BarCase>& info) { return info.param.name; });

TEST_P(CoverBars, CoverExactlyWhatThePictureDoesNotFillAndFollowTheProfile) {
    const BarCase& c = GetParam();
    EngineRun run(c.profileW, c.profileH, c.winW, c.winH);
    ASSERT_EQ(run.rc, 0);
    TestScene::setBackground(kMagenta);
    {
        RenderImage image(c.winW, c.winH);
        ASSERT_TRUE(image.ok());
        image.picture().save(std::string("cover_") + c.name + ".png");
        expectBars(image.picture(), c.barRows, c.barColumns);
    }
    // A profile of the window's shape hides the bars; the first brings them back.
    MVNOgreManager* m = MVNOgreManager::getSingleton();
    m->setProfile(MVNProfile(c.winW, c.winH, 25));
    {
        RenderImage image(c.winW, c.winH);
        ASSERT_TRUE(image.ok());
        expectBars(image.picture(), 0, 0);
    }
    m->setProfile(MVNProfile(c.profileW, c.profileH, 25));
    RenderImage image(c.winW, c.winH);
    ASSERT_TRUE(image.ok());
    expectBars(image.picture(), c.barRows, c.barColumns);
}

TEST(CoverLayerUpdate, ZeroProfileWidthIsRefusedWithTheLoggedReason) {
    MVNOgreCoverLayer layer;  // no bars built: nothing to move
    LogCapture log;
    layer.update(0, 1080, 1920, 1080);
    EXPECT_TRUE(log.has(MVNLogLevel::Error, "Morvane::MVNOgreCoverLayer", "AdjustSizeFill failed"));
    int fw = 0, fh = 0;
    EXPECT_FALSE(MVNOgreCoverLayer::adjustSizeFill(1920, 0, 1920, 1080, &fw, &fh));
}

TEST(LabelOverlay, PanelDarkensItsRectangleAndTheTextIsRed) {
    Marker windowed("not_full_screen");
    {
        EngineRun run(320, 180);
        ASSERT_EQ(run.rc, 0);
        TestScene::setBackground(kMagenta);
        LogCapture log;
        {
            MVNOgreLabel label;
            ASSERT_TRUE(label.isReady());
            MVNRect where(40, 40, 200, 80);
            label.setGeometry(where);
            label.setText("MMMM");
            EXPECT_EQ(label.getText(), "MMMM");
            MVNRect screen = MVNOgreManager::getSingleton()->adjustGeometryProfileToScreen(where);

            RenderImage image(320, 180);
            ASSERT_TRUE(image.ok());
            Picture pic = image.picture();
            pic.save("label.png");
            // Half-transparent black over magenta: 255 * 0.5, within one step.
            int px = static_cast<int>(screen.x + screen.width - 4);
            int py = static_cast<int>(screen.y + screen.height - 4);
            RGBA panel = pic.at(px, py);
            EXPECT_NEAR(panel.r, 128, 1);
            EXPECT_EQ(panel.g, 0);
            EXPECT_NEAR(panel.b, 128, 1);
            EXPECT_EQ(panel.a, 255);  // the frame stays opaque under the panel
            EXPECT_EQ(pic.at(static_cast<int>(screen.x) - 2, py), kMagenta);
            EXPECT_EQ(pic.at(319, 179), kMagenta);
            // Text pixels: red dominates and blue is dimmed below the panel's.
            int textPixels = 0;
            for (int y = static_cast<int>(screen.y); y < static_cast<int>(screen.y + screen.height); ++y) {
                for (int x = static_cast<int>(screen.x); x < static_cast<int>(screen.x + screen.width); ++x) {
                    RGBA c = pic.at(x, y);
                    if (c.r > 200 && c.b < 100) ++textPixels;
                }
            }
            EXPECT_GT(textPixels, 20);

            label.setVisible(false);
            RenderImage hidden(320, 180);
            ASSERT_TRUE(hidden.ok());
            EXPECT_EQ(hidden.at(px, py), kMagenta);
        }
        EXPECT_EQ(log.countContaining("init error"), 0);
    }
}

}  // namespace
