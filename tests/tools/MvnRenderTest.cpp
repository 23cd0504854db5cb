// mvn-render end to end: a small project rendered to PNG pictures, to an
// MP4 file and to raw frames, and its refusals of bad input.
#include <gtest/gtest.h>

#include <sys/wait.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

extern "C" {
#include <libavformat/avformat.h>
}

#include "core/MVNByteBuffer.h"
#include "core/MVNFrame.h"
#include "core/MVNImage.h"
#include "MVNTestPaths.h"

namespace fs = std::filesystem;
using namespace Morvane;

namespace {

struct ToolRun {
    int status = -1;
    std::string err;
    std::string out;
};

ToolRun runTool(const std::string& args, const std::string& environment = "") {
    ToolRun r;
    const std::string errFile = (fs::current_path() / "stderr.txt").string();
    const std::string outFile = (fs::current_path() / "stdout.bin").string();
    std::string cmd = (environment.empty() ? "" : environment + " ") + std::string(MVN_BINARY_DIR) +
                      "/bin/mvn-render " + args + " >" + outFile + " 2>" + errFile;
    int rc = std::system(cmd.c_str());
    r.status = WIFEXITED(rc) ? WEXITSTATUS(rc) : -1;
    std::ifstream e(errFile), o(outFile, std::ios::binary);
    r.err.assign(std::istreambuf_iterator<char>(e), {});
    r.out.assign(std::istreambuf_iterator<char>(o), {});
    return r;
}

// Red background, a blue box at top-left [40:20 80x60] over it.
const char* kProject = R"({
  "profile": { "width": 320, "height": 180, "fps": 25 },
  "tracks": [
    { "clips": [ { "service": "ogre.color", "length": 10, "properties": { "color": "#ff0000ff" } } ] },
    { "clips": [ { "service": "ogre.color", "length": 10, "geometry": "[40:20 80x60]",
                   "properties": { "color": "#0000ffff" } } ] }
  ]
})";

class MvnRender : public ::testing::Test {
protected:
    void SetUp() override {
        // A folder of each test's own: what one test leaves behind never
        // reaches another's checks.
        const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
        dir = fs::current_path() / "render" / (std::string(info->test_suite_name()) + "." + info->name());
        fs::remove_all(dir);
        fs::create_directories(dir);
        project = (dir / "show.json").string();
        std::ofstream(project) << kProject;
    }
    fs::path dir;
    std::string project;
};

TEST_F(MvnRender, PngSequencePutsTheBoxOnItsPixels) {
    ToolRun r = runTool(project + " -o " + (dir / "f%03d.png").string() + " --frames 2:4");
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_FALSE(fs::exists(dir / "f001.png"));
    ASSERT_TRUE(fs::exists(dir / "f002.png"));
    ASSERT_TRUE(fs::exists(dir / "f004.png"));
    EXPECT_FALSE(fs::exists(dir / "f005.png"));
    MVNFrame* frame = MVNImage::loadFromFile((dir / "f003.png").string(), 0, 0);
    ASSERT_NE(frame, nullptr);
    ASSERT_EQ(frame->width(), 320);
    ASSERT_EQ(frame->height(), 180);
    const uint8_t* px = frame->buffer()->ptr();
    auto at = [&](int x, int y) { return px + (static_cast<size_t>(y) * 320 + x) * 4; };  // B,G,R,A
    // Inside the box (corners included) blue, just outside it red.
    for (auto [x, y] : {std::pair{40, 20}, {119, 20}, {40, 79}, {119, 79}, {80, 50}}) {
        EXPECT_EQ(at(x, y)[0], 255) << x << "," << y;
        EXPECT_EQ(at(x, y)[2], 0) << x << "," << y;
    }
    for (auto [x, y] : {std::pair{39, 20}, {120, 20}, {40, 19}, {40, 80}, {300, 170}}) {
        EXPECT_EQ(at(x, y)[0], 0) << x << "," << y;
        EXPECT_EQ(at(x, y)[2], 255) << x << "," << y;
    }
    MVNFrame::pushBackPool(frame);
    // Nothing of the engine's is left in the user's folder.
    for (const auto& entry : fs::directory_iterator(dir)) {
        const std::string name = entry.path().filename().string();
        EXPECT_TRUE(name == "show.json" || name.rfind('f', 0) == 0) << "left behind: " << name;
    }
}

TEST_F(MvnRender, Mp4HoldsEveryFrameAsH264) {
    const std::string out = (dir / "show.mp4").string();
    ToolRun r = runTool(project + " -o " + out);
    ASSERT_EQ(r.status, 0) << r.err;
    AVFormatContext* fmt = nullptr;
    ASSERT_EQ(avformat_open_input(&fmt, out.c_str(), nullptr, nullptr), 0);
    ASSERT_GE(avformat_find_stream_info(fmt, nullptr), 0);
    ASSERT_EQ(fmt->nb_streams, 1u);
    AVCodecParameters* par = fmt->streams[0]->codecpar;
    EXPECT_EQ(par->codec_id, AV_CODEC_ID_H264);
    EXPECT_EQ(par->width, 320);
    EXPECT_EQ(par->height, 180);
    int packets = 0;
    AVPacket* pkt = av_packet_alloc();
    while (av_read_frame(fmt, pkt) >= 0) {
        ++packets;
        av_packet_unref(pkt);
    }
    av_packet_free(&pkt);
    avformat_close_input(&fmt);
    EXPECT_EQ(packets, 10);
    EXPECT_NE(r.err.find("mvn-render: 10 frames in "), std::string::npos) << r.err;
}

TEST_F(MvnRender, RawFramesGoToStandardOutputAsRgba) {
    ToolRun r = runTool(project + " -o - --frames 0:1 --quiet");
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_TRUE(r.err.empty()) << r.err;
    ASSERT_EQ(r.out.size(), 2u * 320 * 180 * 4);
    const uint8_t* last = reinterpret_cast<const uint8_t*>(r.out.data()) + 320 * 180 * 4;
    const uint8_t* corner = last + (179 * 320 + 319) * 4;  // bottom-right: red background
    EXPECT_EQ(corner[0], 255);
    EXPECT_EQ(corner[1], 0);
    EXPECT_EQ(corner[2], 0);
    EXPECT_EQ(corner[3], 255);
}

TEST_F(MvnRender, FastAndSyncOptionsKeepPixelAlignedPicturesExact) {
    ToolRun plain = runTool(project + " -o - --quiet");
    ToolRun fast = runTool(project + " -o - --quiet --no-antialias --sync");
    ASSERT_EQ(plain.status, 0) << plain.err;
    ASSERT_EQ(fast.status, 0) << fast.err;
    ASSERT_EQ(plain.out.size(), 10u * 320 * 180 * 4);
    EXPECT_TRUE(plain.out == fast.out) << "clips on whole pixels look the same without multisampling";
}

TEST_F(MvnRender, BadInputExitsWithTwoAndOneLine) {
    std::ofstream(project) << R"({ "profile": "hd_720_25p", "tracks": [ { "clips": [
        { "service": "ogre.color", "length": 5 },
        { "service": "ogre.image", "length": 5, "resource": "missing.png" } ] } ] })";
    const std::string out = (dir / "bad.mp4").string();
    ToolRun r = runTool(project + " -o " + out);
    EXPECT_EQ(r.status, 2);
    EXPECT_EQ(r.err, "mvn-render: " + project + ": tracks[0].clips[1].resource: file not found: " +
                         (dir / "missing.png").string() + "\n");
    EXPECT_FALSE(fs::exists(out));

    r = runTool(project + " -o " + (dir / "x.avi").string());
    EXPECT_EQ(r.status, 2);
    r = runTool((dir / "nope.json").string() + " -o " + out);
    EXPECT_EQ(r.status, 2);
    EXPECT_NE(r.err.find("no such project file"), std::string::npos);
    r = runTool(project + " -o " + out + " --frames 4:2");
    EXPECT_EQ(r.status, 2);
}

TEST_F(MvnRender, AClipAfterABlankShowsOnlyFromItsStart) {
    // A picture clip puts its quad in the scene when it is built, long
    // before the timeline reaches it.
    std::vector<uint8_t> blue(16 * 16 * 4);
    for (size_t i = 0; i < blue.size(); i += 4) blue[i] = blue[i + 3] = 255;  // B,G,R,A
    ASSERT_EQ(MVNImage::saveToFile((dir / "blue.png").string(), blue.data(), 16, 16), 0);
    std::ofstream(project) << R"({ "profile": { "width": 64, "height": 64, "fps": 25 }, "tracks": [
        { "clips": [ { "service": "ogre.color", "length": 6, "properties": { "color": "#ff0000ff" } } ] },
        { "clips": [ { "blank": 3 }, { "service": "ogre.image", "resource": "blue.png", "length": 3 } ] } ] })";
    ToolRun r = runTool(project + " -o - --quiet");
    ASSERT_EQ(r.status, 0) << r.err;
    ASSERT_EQ(r.out.size(), 6u * 64 * 64 * 4);
    for (int frame = 0; frame < 6; ++frame) {
        const uint8_t* centre = reinterpret_cast<const uint8_t*>(r.out.data()) + (frame * 64 * 64 + 32 * 64 + 32) * 4;
        EXPECT_EQ(centre[0], frame < 3 ? 255 : 0) << "frame " << frame;  // red below, blue from frame 3
        EXPECT_EQ(centre[2], frame < 3 ? 0 : 255) << "frame " << frame;
    }
}

TEST_F(MvnRender, AFilteredClipShowsOnlyItsFilteredPicture) {
    // A red picture masked to a circle over blue: outside the circle the
    // blue track must show, not the unfiltered red quad.
    std::vector<uint8_t> red(16 * 16 * 4);
    for (size_t i = 0; i < red.size(); i += 4) red[i + 2] = red[i + 3] = 255;  // B,G,R,A
    ASSERT_EQ(MVNImage::saveToFile((dir / "red.png").string(), red.data(), 16, 16), 0);
    std::ofstream(project) << R"({ "profile": { "width": 64, "height": 64, "fps": 25 }, "tracks": [
        { "clips": [ { "service": "ogre.color", "length": 2, "properties": { "color": "#0000ffff" } } ] },
        { "clips": [ { "service": "ogre.image", "resource": "red.png", "length": 2, "filters": [
            { "service": "ogre.filter.sample", "resource": "MaskCircleFilter",
              "properties": { "ufmCircleRadius": 0.5, "ufmSmoothDiff": 0.02 } } ] } ] } ] })";
    ToolRun r = runTool(project + " -o - --frames 1:1 --quiet");
    ASSERT_EQ(r.status, 0) << r.err;
    ASSERT_EQ(r.out.size(), 64u * 64 * 4);
    auto px = [&](int x, int y) { return reinterpret_cast<const uint8_t*>(r.out.data()) + (y * 64 + x) * 4; };
    EXPECT_EQ(px(32, 32)[0], 255) << "the circle keeps the picture";
    EXPECT_EQ(px(32, 32)[2], 0);
    for (auto [x, y] : {std::pair{1, 1}, {62, 1}, {1, 62}, {62, 62}}) {
        EXPECT_EQ(px(x, y)[0], 0) << x << "," << y;
        EXPECT_EQ(px(x, y)[2], 255) << x << "," << y;
    }
}

TEST_F(MvnRender, AFilteredClipWaitsForItsTurnAndLeavesWithIt) {
    std::vector<uint8_t> pixels(16 * 16 * 4);
    for (size_t i = 0; i < pixels.size(); i += 4) pixels[i + 2] = pixels[i + 3] = 255;  // B,G,R,A red
    ASSERT_EQ(MVNImage::saveToFile((dir / "red.png").string(), pixels.data(), 16, 16), 0);
    std::ofstream(project) << R"({ "profile": { "width": 64, "height": 64, "fps": 25 }, "tracks": [
        { "clips": [ { "service": "ogre.color", "length": 3, "properties": { "color": "#0000ffff" } } ] },
        { "clips": [ { "blank": 1 },
                     { "service": "ogre.image", "resource": "red.png", "length": 1, "filters": [
                       { "service": "ogre.filter.sample", "resource": "SaturationFilter" } ] },
                     { "blank": 1 } ] } ] })";
    ToolRun r = runTool(project + " -o - --quiet");
    ASSERT_EQ(r.status, 0) << r.err;
    ASSERT_EQ(r.out.size(), 3u * 64 * 64 * 4);
    const char* expect[] = {"blue", "red", "blue"};
    for (int frame = 0; frame < 3; ++frame) {
        const uint8_t* centre = reinterpret_cast<const uint8_t*>(r.out.data()) + (frame * 64 * 64 + 32 * 64 + 32) * 4;
        bool red = centre[0] == 255 && centre[2] == 0;
        bool blue = centre[0] == 0 && centre[2] == 255;
        EXPECT_TRUE(std::string(expect[frame]) == "red" ? red : blue) << "frame " << frame << " should be " << expect[frame];
    }
}

TEST_F(MvnRender, FramesPastTheEndAreRefused) {
    ToolRun r = runTool(project + " -o - --frames 5:10");
    EXPECT_EQ(r.status, 2);
    EXPECT_NE(r.err.find("lies past the project's end (10 frames)"), std::string::npos) << r.err;
    EXPECT_TRUE(r.out.empty());
}

// Two clips of 6 frames with a 4-frame fade from a .glsl file between them:
// 8 frames, the mix at k/4 on its frame k, each clip alone outside it.
TEST_F(MvnRender, ATransitionBetweenTwoClipsMixesThemFrameByFrame) {
    std::ofstream(dir / "fade.glsl") << "vec4 transition(vec2 uv) { return mix(getFromColor(uv), getToColor(uv), progress); }\n";
    std::ofstream(project) << R"({ "profile": { "width": 64, "height": 64, "fps": 25 }, "tracks": [
        { "clips": [ { "service": "ogre.color", "length": 6, "properties": { "color": "#ff0000ff" } },
                     { "transition": "fade.glsl", "length": 4 },
                     { "service": "ogre.color", "length": 6, "properties": { "color": "#0000ffff" } } ] } ] })";
    ToolRun r = runTool(project + " -o - --quiet");
    ASSERT_EQ(r.status, 0) << r.err;
    ASSERT_EQ(r.out.size(), 8u * 64 * 64 * 4);
    const double shareOfB[] = {0, 0, 0, 0.25, 0.5, 0.75, 1, 1};
    for (int frame = 0; frame < 8; ++frame) {
        const uint8_t* centre = reinterpret_cast<const uint8_t*>(r.out.data()) + (frame * 64 * 64 + 32 * 64 + 32) * 4;
        EXPECT_NEAR(centre[0], 255 * (1 - shareOfB[frame]), 2) << "frame " << frame;
        EXPECT_NEAR(centre[2], 255 * shareOfB[frame], 2) << "frame " << frame;
    }
}

TEST_F(MvnRender, AMisplacedOrUnknownTransitionExitsWithTwoAndOneLine) {
    std::ofstream(project) << R"({ "profile": { "width": 64, "height": 64, "fps": 25 }, "tracks": [
        { "clips": [ { "transition": "fade", "length": 4 },
                     { "service": "ogre.color", "length": 6 } ] } ] })";
    ToolRun r = runTool(project + " -o - --quiet");
    EXPECT_EQ(r.status, 2);
    EXPECT_EQ(r.err, "mvn-render: " + project +
                         ": tracks[0].clips[0]: a transition needs a clip before it; this one starts the track\n");
    EXPECT_TRUE(r.out.empty());

    // A name that is no transition the renderer knows.
    std::ofstream(project) << R"({ "profile": { "width": 64, "height": 64, "fps": 25 }, "tracks": [
        { "clips": [ { "service": "ogre.color", "length": 6 }, { "transition": "fadee", "length": 4 },
                     { "service": "ogre.color", "length": 6 } ] } ] })";
    r = runTool(project + " -o - --quiet");
    EXPECT_EQ(r.status, 2);
    EXPECT_EQ(r.err, "mvn-render: " + project + ": tracks[0].clips[1].transition: unknown transition \"fadee\"\n");
    EXPECT_TRUE(r.out.empty());
}

// The listing is the library, family by family in catalogue order, and
// nothing else the engine has read: no filter or helper material.
TEST_F(MvnRender, ListTransitionsPrintsTheLibraryByFamily) {
    ToolRun r = runTool("--list-transitions");
    ASSERT_EQ(r.status, 0) << r.err;
    std::istringstream lines(r.out);
    std::string line;
    std::vector<std::string> titles;
    int names = 0;
    std::string last;
    while (std::getline(lines, line)) {
        last = line;
        auto colon = line.find(':');
        if (colon == std::string::npos) continue;
        titles.push_back(line.substr(0, colon));
        std::istringstream words(line.substr(colon + 1));
        for (std::string w; words >> w; ++names) EXPECT_EQ(w.find('/'), std::string::npos) << w << " is no transition";
    }
    ASSERT_GE(titles.size(), 2u) << r.out;
    EXPECT_EQ(titles[0], "Fades");
    EXPECT_EQ(r.out.rfind("Fades: fade fadeblack fadewhite fadegrays", 0), 0u) << r.out;
    EXPECT_NE(r.out.find("\nShapes: "), std::string::npos);
    EXPECT_NE(r.out.find(" circleopen "), std::string::npos);
    EXPECT_EQ(r.out.find("material:"), std::string::npos);
    EXPECT_EQ(last, std::to_string(names) + " transitions; a .glsl file in the open transition format is taken as well");
}

}  // namespace

// Multisampling as chosen frame by frame: by default a frame is drawn with
// it only where it changes a pixel. Each case renders the same frames three
// ways; the default must give the bytes of --antialias on every frame, and
// the frames where --antialias and --no-antialias differ are the ones whose
// clip stands off whole pixels. Where no frame differs, the default must
// not have multisampled any (the reader's debug line says when it starts).
struct MultisampleCase {
    const char* name;
    std::string tracks;     // the project's tracks, 6 frames of 96x64
    // Frames that multisampling changes; {-1}: some, not known which (a
    // turning clip's first frame stands unturned or not as the animation's
    // start falls).
    std::vector<int> differ;
};

// `clip` on a second track over a red frame.
std::string overRed(const std::string& clip) {
    return std::string(R"({ "clips": [ { "service": "ogre.color", "length": 6, "properties": { "color": "#ff0000ff" } } ] },
        { "clips": [ )") + clip + " ] }";
}

// A blue box clip of `box` (geometry and properties) over a red frame.
std::string boxOverRed(const char* box) {
    return overRed(std::string(R"({ "service": "ogre.color", "length": 6, )") + box + " }");
}

// Red to blue by `transition` over frames 1 to 4; the blue clip stands on
// a second track above a green one, so the transition's quad is not at
// depth 0.
std::string transitionOverGreen(const char* transition) {
    return std::string(R"({ "clips": [ { "service": "ogre.color", "length": 6, "properties": { "color": "#00ff00ff" } } ] },
        { "clips": [ { "service": "ogre.color", "length": 5, "properties": { "color": "#ff0000ff" } },
                     { "transition": ")") + transition + R"(", "length": 4 },
                     { "service": "ogre.color", "length": 5, "properties": { "color": "#0000ffff" } } ] })";
}

class MvnRenderMultisample : public MvnRender, public ::testing::WithParamInterface<MultisampleCase> {};

std::vector<int> framesThatDiffer(const std::string& a, const std::string& b, size_t frameBytes) {
    std::vector<int> out;
    for (size_t f = 0; f * frameBytes < a.size() && f * frameBytes < b.size(); ++f) {
        if (a.compare(f * frameBytes, frameBytes, b, f * frameBytes, frameBytes) != 0) out.push_back(int(f));
    }
    return out;
}

TEST_P(MvnRenderMultisample, DefaultMatchesMultisampledBytesAndSkipsItOnlyWhereNothingChanges) {
    const MultisampleCase& c = GetParam();
    std::ofstream(project) << R"({ "profile": { "width": 96, "height": 64, "fps": 25 }, "tracks": [ )" << c.tracks
                           << " ] }";
    ToolRun automatic = runTool(project + " -o - --quiet", "MORVANE_LOG_LEVEL=debug");
    ToolRun forced = runTool(project + " -o - --quiet --antialias");
    ToolRun off = runTool(project + " -o - --quiet --no-antialias");
    for (const ToolRun* r : {&automatic, &forced, &off}) ASSERT_EQ(r->status, 0) << r->err;
    const size_t frameBytes = 96 * 64 * 4;
    ASSERT_EQ(forced.out.size(), 6 * frameBytes);
    EXPECT_EQ(framesThatDiffer(automatic.out, forced.out, frameBytes), std::vector<int>{})
        << "frames where the default is not the multisampled picture";
    std::vector<int> differ = framesThatDiffer(forced.out, off.out, frameBytes);
    if (c.differ == std::vector<int>{-1}) {
        EXPECT_FALSE(differ.empty()) << "multisampling changed no frame";
    } else {
        EXPECT_EQ(differ, c.differ) << "frames that multisampling changes";
    }
    if (c.differ.empty()) {
        EXPECT_EQ(automatic.err.find("Morvane::RenderReaderRTT: multisampled:1"), std::string::npos)
            << "a frame was multisampled where none needs it";
    }
}

INSTANTIATE_TEST_SUITE_P(
    Cases, MvnRenderMultisample,
    ::testing::Values(
        MultisampleCase{"WholePixels", boxOverRed(R"("geometry": "[24:16 48x32]", "properties": { "color": "#0000ffff" })"),
                        {}},
        MultisampleCase{"QuarterTurn",
                        boxOverRed(R"("geometry": "[24:16 48x32]", "properties": { "color": "#0000ffff", "rotation": 90 })"),
                        {}},
        MultisampleCase{"Turned",
                        boxOverRed(R"("geometry": "[24:16 48x32]", "properties": { "color": "#0000ffff", "rotation": 30 })"),
                        {0, 1, 2, 3, 4, 5}},
        MultisampleCase{"HalfPixelPlace",
                        boxOverRed(R"("geometry": "[24.5:16.5 48x32]", "properties": { "color": "#0000ffff" })"),
                        {0, 1, 2, 3, 4, 5}},
        MultisampleCase{"Turning", boxOverRed(R"("geometry": "[24:16 48x32]", "properties": { "color": "#0000ffff", "anim": 1 })"),
                        {-1}},
        MultisampleCase{"Pulsing", boxOverRed(R"("geometry": "[24:16 48x32]", "properties": { "color": "#0000ffff", "anim": 3 })"),
                        {-1}},
        // A transition mixes its two pictures in its program, on a quad
        // that covers the frame: nothing of it needs multisampling.
        MultisampleCase{"Fade", transitionOverGreen("fade"), {}},
        MultisampleCase{"CircleOpen", transitionOverGreen("circleopen"), {}},
        MultisampleCase{"WipeLeft", transitionOverGreen("wipeleft"), {}},
        // Text for the first half: glyphs are shapes, drawn multisampled in
        // the frame, or in their track's texture when extruded; the frames
        // after it are not multisampled.
        MultisampleCase{"FlatText",
                        overRed(R"({ "service": "text", "length": 3, "properties": { "textString": "VA", "textSize": 40 } })"),
                        {0, 1, 2}},
        MultisampleCase{"ExtrudedText",
                        overRed(R"({ "service": "text", "length": 3, "properties": { "textString": "VA", "textSize": 40,
                             "textThree": true, "textDepth": 6 } })"),
                        {0, 1, 2}}),
    [](const ::testing::TestParamInfo<MultisampleCase>& info) { return std::string(info.param.name); });
