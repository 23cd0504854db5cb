// Text clips written in a project file: the loader builds them with their
// properties and geometry, and the title shows inside its box; an animated
// title moves over the clip's length; bad animation properties are refused
// with their JSON path; title pictures are found beside the project, and a
// missing one names its place in the file; so are fonts.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>

#include "ProjectSceneTest.h"
#include "text/MVNProducerText.h"

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

// Left to right over 50 frames: outside its box at the start, in the middle
// of it half way.
TEST_F(TextProject, AnAnimatedTitleCrossesItsBoxOverTheClip) {
    ASSERT_EQ(load(R"([ { "clips": [ { "service": "text", "length": 50, "geometry": "[20:20 200x60]",
        "properties": { "textString": "Hi", "textSize": 40, "textColorBase": "#00ff00ff",
                        "textAnimationType": 5 } } ] } ])"),
              0)
        << loader.error();
    auto green = [this](int position, double* centre) {
        draw(position);
        RenderImage out(W, H);
        EXPECT_TRUE(out.ok());
        int n = 0;
        double sum = 0;
        for (int y = 0; y < H; ++y)
            for (int x = 0; x < W; ++x) {
                RGBA c = out.at(x, y);
                if (c.g > 200 && c.r < 60 && c.b < 60) ++n, sum += x;
            }
        *centre = n > 0 ? sum / n : -1;
        return n;
    };
    double centre = 0;
    EXPECT_EQ(green(0, &centre), 0);
    EXPECT_GT(green(25, &centre), 150);
    EXPECT_NEAR(centre, 120, 4);
}

struct BadAnimation {
    const char* name;
    const char* properties;
    const char* where;
};

class TextProjectErrors : public TextProject, public ::testing::WithParamInterface<BadAnimation> {};

TEST_P(TextProjectErrors, NameTheJsonPath) {
    std::string tracks = std::string(R"([ { "clips": [ { "service": "text", "length": 10, "properties": )") +
                         GetParam().properties + " } ] } ]";
    EXPECT_EQ(load(tracks), -1);
    EXPECT_EQ(loader.error(), (std::filesystem::current_path() / "show.json").string() +
                                  ": tracks[0].clips[0].properties." + GetParam().where);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, TextProjectErrors,
    ::testing::Values(
        BadAnimation{"TypeOutOfRange", R"({ "textAnimationType": 31 })",
                     "textAnimationType: expected an integer from 0 (none) to 30"},
        BadAnimation{"TypeAsText", R"({ "textAnimationType": "9" })",
                     "textAnimationType: expected an integer from 0 (none) to 30"},
        BadAnimation{"TimeOverOne", R"({ "textAnimationType": 9, "textAnimationSecendStartTime": 1.5 })",
                     "textAnimationSecendStartTime: expected a number from 0 to 1 (a share of the clip)"},
        BadAnimation{"CoverColour", R"({ "textAnimationType": 29, "AnimTextKaLaOkCol": "red" })",
                     "AnimTextKaLaOkCol: expected a colour \"#rrggbbaa\""}),
    [](const ::testing::TestParamInfo<BadAnimation>& info) { return std::string(info.param.name); });

TEST_F(TextProject, TitlePicturesAreFoundBesideTheProjectAndAMissingOneNamesItsKey) {
    ASSERT_EQ(std::system("ffmpeg -v error -y -f lavfi -i color=c=0x00c000:s=16x16 -frames:v 1 green.png"), 0);
    // A picture beside the project in the top-left quarter, from the top,
    // behind a text on the first track.
    ASSERT_EQ(load(R"([ { "clips": [ { "service": "text", "length": 10, "properties": { "textString": "Hi",
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

// A project in a folder of its own names its font beside it: the font is
// taken from there, not from the working folder; a missing one names its key.
TEST_F(TextProject, FontsAreFoundFromTheProjectFolderAndAMissingOneNamesItsKey) {
    namespace fs = std::filesystem;
    const fs::path folder = fs::current_path() / "elsewhere";
    fs::create_directories(folder / "fonts");
    fs::copy_file(MVNProducerText::defaultBackupFile(), folder / "fonts" / "Sans.ttf",
                  fs::copy_options::overwrite_existing);
    auto text = [](const char* font) {
        return std::string(R"({ "profile": { "width": 320, "height": 180, "fps": 25 }, "tracks": [ { "clips": [
            { "service": "text", "length": 10, "geometry": "[20:20 200x60]", "properties": { "textString": "Hi",
              "textSize": 40, "textColorBase": "#00ff00ff", "textFontFile": ")") +
               font + R"(", "textBackupPath": ")" + font + R"(" } } ] } ] })";
    };
    ASSERT_EQ(loader.loadFromString(text("fonts/Sans.ttf"), (folder / "show.json").string(), project), 0)
        << loader.error();
    draw(0);
    RenderImage out(W, H);
    ASSERT_TRUE(out.ok());
    int green = 0;
    for (int y = 0; y < H; ++y)
        for (int x = 0; x < W; ++x) green += out.at(x, y).g > 200 && out.at(x, y).r < 60;
    EXPECT_GT(green, 150);
    MVNProjectLoader::unload(project);

    EXPECT_EQ(loader.loadFromString(text("fonts/None.ttf"), (folder / "show.json").string(), project), -1);
    EXPECT_EQ(loader.error(), (folder / "show.json").string() +
                                  ": tracks[0].clips[0].properties.textFontFile: file not found: " +
                                  (folder / "fonts" / "None.ttf").string());
}

}  // namespace
