// Text clips written in a project file: the loader builds them with their
// properties and geometry, and the title shows inside its box; title
// pictures are found beside the project, and a missing one names its place
// in the file.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

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

TEST_F(TextProject, TitlePicturesAreFoundBesideTheProjectAndAMissingOneNamesItsKey) {
    ASSERT_EQ(std::system("ffmpeg -v error -y -f lavfi -i color=c=0x00c000:s=16x16 -frames:v 1 green.png"), 0);
    // A picture beside the project in the top-left quarter, from the top,
    // behind a text on the second track.
    ASSERT_EQ(load(R"([ { "clips": [ { "service": "ogre.color", "length": 10, "properties": { "color": "#00000000" } } ] },
        { "clips": [ { "service": "text", "length": 10, "properties": { "textString": "Hi",
        "textSize": 40, "textTitleImageName": "green.png", "textBgGeometry": "[0:0 160x90]" } } ] } ])"),
              0)
        << loader.error();
    draw(0);
    {
        RenderImage out(W, H);
        ASSERT_TRUE(out.ok());
        // The picture's green passes through the ffmpeg command's colour
        // conversion: a step or two either way.
        int green = 0;
        for (int y = 0; y < 40; ++y)
            for (int x = 0; x < 40; ++x) green += maxColourDifference(out.at(x, y), RGBA{0, 192, 0, 255}) <= 4;
        EXPECT_EQ(green, 40 * 40) << out.at(10, 10);
        EXPECT_EQ(out.at(10, H - 10), kMagenta);
        EXPECT_EQ(out.at(W - 10, 10), kMagenta);
    }
    MVNProjectLoader::unload(project);
    EXPECT_EQ(load(R"([ { "clips": [ { "service": "text", "length": 10, "properties": { "textString": "Hi",
        "textTitleVideoPath": "nowhere.mp4", "textTitleMaskVideoPath": "green.png" } } ] } ])"),
              -1);
    const std::filesystem::path here = std::filesystem::current_path();
    EXPECT_EQ(loader.error(), (here / "show.json").string() +
                                  ": tracks[0].clips[0].properties.textTitleVideoPath: file not found: " +
                                  (here / "nowhere.mp4").string());
}

}  // namespace
