// Text clips written in a project file: the loader builds them with their
// properties and geometry, and the title shows inside its box.
#include <gtest/gtest.h>

#include "ProjectSceneTest.h"

using namespace Morvane;
using namespace MorvaneTest;

namespace {

class TextProject : public ProjectSceneTest {};

TEST_F(TextProject, ATitleShowsInItsGeometryInItsColour) {
    ASSERT_EQ(load(R"([ { "clips": [ { "service": "text", "length": 10, "geometry": "[20:20 140x60]",
        "properties": { "textString": "Hi", "textSize": 40, "textColorBase": "#00ff00ff" } } ] } ])"),
              0)
        << loader.error();
    draw(0);
    RenderImage out(W, H);
    ASSERT_TRUE(out.ok());
    int inside = 0, outside = 0;
    for (int y = 0; y < H; ++y)
        for (int x = 0; x < W; ++x) {
            RGBA c = out.at(x, y);
            bool green = c.g > 200 && c.r < 60 && c.b < 60;
            if (!green) continue;
            (x >= 20 && x < 160 && y >= 20 && y < 80 ? inside : outside)++;
        }
    EXPECT_GT(inside, 150);
    EXPECT_EQ(outside, 0);
}

}  // namespace
