// mvn-play shows what mvn-render writes: its screenshots of a project are
// mvn-render's frames, pixel for pixel within two levels, the timecode label
// changes only its own corner, and a window of another shape shows the
// picture whole between black bars.
#include <gtest/gtest.h>

#include <sys/wait.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "core/MVNByteBuffer.h"
#include "core/MVNFrame.h"
#include "core/MVNImage.h"
#include "MVNTestPaths.h"

namespace fs = std::filesystem;
using namespace Morvane;

namespace {

int runTool(const std::string& tool, const std::string& args, std::string* err = nullptr) {
    const std::string errFile = (fs::current_path() / (tool + ".stderr")).string();
    std::string cmd = std::string(MVN_BINARY_DIR) + "/bin/" + tool + " " + args + " >/dev/null 2>" + errFile;
    int rc = std::system(cmd.c_str());
    if (err) {
        std::ifstream e(errFile);
        err->assign(std::istreambuf_iterator<char>(e), {});
    }
    return WIFEXITED(rc) ? WEXITSTATUS(rc) : -1;
}

// Red background, a blue box at [40:20 80x60] and a green one moving right
// by 8 pixels a frame: a window one frame late or off by a pixel shows.
const char* kProject = R"({
  "profile": { "width": 320, "height": 180, "fps": 25 },
  "tracks": [
    { "clips": [ { "service": "ogre.color", "length": 10, "properties": { "color": "#ff0000ff" } } ] },
    { "clips": [ { "service": "ogre.color", "length": 10, "geometry": "[40:20 80x60]",
                   "properties": { "color": "#0000ffff" } } ] },
    { "clips": [ { "service": "ogre.color", "length": 2, "geometry": "[200:100 30x30]",
                   "properties": { "color": "#00ff00ff" } },
                 { "service": "ogre.color", "length": 8, "geometry": "[260:120 30x30]",
                   "properties": { "color": "#00ff00ff" } } ] }
  ]
})";

// A PNG as B,G,R,A bytes.
struct Png {
    explicit Png(const fs::path& path) : frame(MVNImage::loadFromFile(path.string(), 0, 0)) {}
    ~Png() {
        if (frame) MVNFrame::pushBackPool(frame);
    }
    int width() const { return frame->width(); }
    int height() const { return frame->height(); }
    const uint8_t* at(int x, int y) const { return frame->buffer()->ptr() + (static_cast<size_t>(y) * width() + x) * 4; }
    MVNFrame* frame;
};

int channelDiff(const uint8_t* a, const uint8_t* b) {
    return std::max({std::abs(a[0] - b[0]), std::abs(a[1] - b[1]), std::abs(a[2] - b[2])});
}

class MvnPlay : public ::testing::Test {
protected:
    void SetUp() override {
        dir = fs::current_path() / "play";
        fs::remove_all(dir);
        fs::create_directories(dir / "render");
        fs::create_directories(dir / "shots");
        project = (dir / "show.json").string();
        std::ofstream(project) << kProject;
        ASSERT_EQ(runTool("mvn-render", project + " -o " + (dir / "render/f%05d.png").string() + " --frames 1:2 -q"), 0);
    }
    int play(const std::string& extra, std::string* err = nullptr) {
        return runTool("mvn-play", project + " --frames 1:2 --screenshot " + (dir / "shots").string() + " " + extra, err);
    }
    fs::path rendered(int n) const { return dir / "render" / ("f0000" + std::to_string(n) + ".png"); }
    fs::path shot(int n) const { return dir / "shots" / ("frame0000" + std::to_string(n) + ".png"); }
    fs::path dir;
    std::string project;
};

TEST_F(MvnPlay, WindowOfTheProfileSizeShowsTheRenderedFrames) {
    std::string err;
    ASSERT_EQ(play("--no-timecode", &err), 0) << err;
    for (int n : {1, 2}) {
        Png shown(shot(n));
        Png expected(rendered(n));
        ASSERT_NE(shown.frame, nullptr);
        ASSERT_NE(expected.frame, nullptr);
        ASSERT_EQ(shown.width(), 320);
        ASSERT_EQ(shown.height(), 180);
        int worst = 0;
        for (int y = 0; y < 180; ++y)
            for (int x = 0; x < 320; ++x) worst = std::max(worst, channelDiff(shown.at(x, y), expected.at(x, y)));
        EXPECT_LE(worst, 2) << "frame " << n;
    }
    EXPECT_FALSE(fs::exists(shot(0)));
    EXPECT_FALSE(fs::exists(shot(3)));
}

TEST_F(MvnPlay, TimecodeLabelChangesOnlyItsCorner) {
    std::string err;
    ASSERT_EQ(play("", &err), 0) << err;
    Png shown(shot(2));
    Png expected(rendered(2));
    ASSERT_NE(shown.frame, nullptr);
    // The label's panel covers [8:8 176x44] of the profile.
    int inside = 0;
    int worstOutside = 0;
    for (int y = 0; y < 180; ++y) {
        for (int x = 0; x < 320; ++x) {
            int d = channelDiff(shown.at(x, y), expected.at(x, y));
            if (x >= 8 && x < 184 && y >= 8 && y < 52) {
                if (d > 32) ++inside;
            } else {
                worstOutside = std::max(worstOutside, d);
            }
        }
    }
    EXPECT_LE(worstOutside, 2);
    EXPECT_GT(inside, 176 * 44 / 2) << "the panel darkens its rectangle";
}

// A window of another shape: the picture fitted whole, at its own scale
// here, the rest covered by black bars.
struct BarCase {
    int width, height;  // the window
    int left, top;      // where the picture lands in it
};

class MvnPlayBars : public MvnPlay, public ::testing::WithParamInterface<BarCase> {};

TEST_P(MvnPlayBars, PictureSitsWholeBetweenBlackBars) {
    const BarCase c = GetParam();
    std::string err;
    ASSERT_EQ(play("--no-timecode --size " + std::to_string(c.width) + "x" + std::to_string(c.height), &err), 0) << err;
    Png shown(shot(1));
    Png expected(rendered(1));
    ASSERT_NE(shown.frame, nullptr);
    ASSERT_EQ(shown.width(), c.width);
    ASSERT_EQ(shown.height(), c.height);
    const uint8_t black[4] = {0, 0, 0, 255};
    int worstPicture = 0;
    int worstBar = 0;
    for (int y = 0; y < c.height; ++y) {
        for (int x = 0; x < c.width; ++x) {
            int px = x - c.left;
            int py = y - c.top;
            if (px >= 0 && px < 320 && py >= 0 && py < 180) {
                worstPicture = std::max(worstPicture, channelDiff(shown.at(x, y), expected.at(px, py)));
            } else {
                worstBar = std::max(worstBar, channelDiff(shown.at(x, y), black));
            }
        }
    }
    EXPECT_LE(worstPicture, 2);
    EXPECT_LE(worstBar, 2);
}

INSTANTIATE_TEST_SUITE_P(Windows, MvnPlayBars,
                         ::testing::Values(BarCase{320, 240, 0, 30}, BarCase{400, 180, 40, 0}),
                         [](const auto& info) {
                             return std::to_string(info.param.width) + "x" + std::to_string(info.param.height);
                         });

TEST(MvnPlayArguments, RefusesWhatItCannotShow) {
    std::string err;
    EXPECT_EQ(runTool("mvn-play", "", &err), 2);
    EXPECT_EQ(runTool("mvn-play", "no-such-project.json", &err), 2);
    EXPECT_NE(err.find("mvn-play: no-such-project.json: no such project file"), std::string::npos) << err;
    EXPECT_EQ(runTool("mvn-play", "x.json --size 321x180", &err), 2);
    EXPECT_NE(err.find("--size wants WxH, both even"), std::string::npos) << err;
    EXPECT_EQ(runTool("mvn-play", "x.json --frames 5:2", &err), 2);
}

}  // namespace
