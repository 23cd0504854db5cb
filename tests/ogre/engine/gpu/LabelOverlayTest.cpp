// On-screen labels are overlays: they show in the picture the reader brings
// back, as a half-transparent black panel with red text, where they are put.
#include <gtest/gtest.h>

#include <cstdlib>

#include "GpuTestSupport.h"
#include "LogCapture.h"
#include "engine/MVNOgreLabel.h"

using namespace Morvane;
using namespace MorvaneTest;

namespace {

constexpr int W = 320;
constexpr int H = 180;

TEST(LabelOverlay, PanelDarkensItsRectangleAndTheTextIsRed) {
    Marker windowed("not_full_screen");
    {
        EngineRun run(W, H);
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

            RenderImage image(W, H);
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
            EXPECT_EQ(pic.at(W - 1, H - 1), kMagenta);
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
            RenderImage hidden(W, H);
            ASSERT_TRUE(hidden.ok());
            EXPECT_EQ(hidden.at(px, py), kMagenta);
        }
        EXPECT_EQ(log.countContaining("init error"), 0);
    }
}

}  // namespace
