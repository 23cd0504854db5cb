// mvn-render in chunks: each chunk of a small project rendered on its own,
// joined with --join, must decode to the single render's frames and times;
// bad chunk and join arguments exit with 2 and one line.
#include <gtest/gtest.h>

#include <sys/wait.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include "MVNTestPaths.h"

namespace fs = std::filesystem;

namespace {

struct RenderRun {
    int status = -1;
    std::string err;
};

RenderRun render(const std::string& args) {
    RenderRun r;
    const std::string errFile = (fs::current_path() / "chunk-stderr.txt").string();
    std::string cmd = std::string(MVN_BINARY_DIR) + "/bin/mvn-render " + args + " >/dev/null 2>" + errFile;
    int rc = std::system(cmd.c_str());
    r.status = WIFEXITED(rc) ? WEXITSTATUS(rc) : -1;
    std::ifstream e(errFile);
    r.err.assign(std::istreambuf_iterator<char>(e), {});
    return r;
}

std::string capture(const std::string& cmd) {
    std::string out;
    if (FILE* p = ::popen(cmd.c_str(), "r")) {
        char buf[65536];
        size_t n;
        while ((n = std::fread(buf, 1, sizeof buf, p)) > 0) out.append(buf, n);
        ::pclose(p);
    }
    return out;
}

// Frames as a player sees them (an edit list that cuts a frame shows here).
std::string frameTimes(const std::string& path) {
    return capture("ffprobe -v error -select_streams v -show_entries frame=pts_time -of csv=p=0 " + path +
                   " | cut -d, -f1 | grep .");
}

std::string luma(const std::string& path) {
    return capture("ffmpeg -v error -i " + path + " -f rawvideo -pix_fmt gray -");
}

// 110 frames, three 50-frame key-frame intervals: cuts inside the chunks
// and one on their border (frame 50).
const char* kProject = R"({
  "profile": { "width": 320, "height": 180, "fps": 25 },
  "tracks": [
    { "clips": [ { "service": "ogre.color", "length": 50, "properties": { "color": "#c02020ff" } },
                 { "service": "ogre.color", "length": 60, "properties": { "color": "#2040c0ff" } } ] },
    { "clips": [ { "service": "ogre.color", "length": 30, "geometry": "[40:20 80x60]", "properties": { "color": "#ffff00ff" } },
                 { "service": "ogre.color", "length": 45, "geometry": "[100:60 160x100]", "properties": { "color": "#ffffffff" } },
                 { "service": "ogre.color", "length": 35, "geometry": "[0:150 320x30]", "properties": { "color": "#00ff00ff" } } ] }
  ]
})";
constexpr int kFrames = 110;

class MvnRenderChunks : public ::testing::Test {
protected:
    void SetUp() override {
        dir = fs::current_path() / "chunks";
        fs::remove_all(dir);
        fs::create_directories(dir / "out");
        project = (dir / "film.json").string();
        std::ofstream(project) << kProject;
    }
    fs::path dir;
    std::string project;
};

TEST_F(MvnRenderChunks, ChunksJoinIntoTheSingleRender) {
    const std::string single = (dir / "single.mp4").string();
    ASSERT_EQ(render(project + " -o " + single + " --quiet").status, 0);
    const std::string film = (dir / "film.mp4").string();
    for (const char* k : {"2/2", "1/2"}) {
        RenderRun r = render(project + " -o " + film + " --chunk " + k + " --quiet");
        ASSERT_EQ(r.status, 0) << r.err;
    }
    EXPECT_FALSE(fs::exists(film)) << "a chunk writes beside the film, never the film";
    const std::string seg1 = (dir / "film.chunk-1-of-2.mp4").string();
    const std::string seg2 = (dir / "film.chunk-2-of-2.mp4").string();
    // The first chunk takes the two first intervals, the second the rest.
    EXPECT_EQ(frameTimes(seg1).size(), frameTimes(single).find("4.000000"));
    RenderRun joined = render("--join " + film + " " + seg2 + " " + seg1);
    ASSERT_EQ(joined.status, 0) << joined.err;
    EXPECT_EQ(joined.err, "mvn-render: 110 frames joined into " + film + "\n");

    const std::string times = frameTimes(single);
    EXPECT_EQ(std::count(times.begin(), times.end(), '\n'), kFrames) << "the single render keeps its last frame";
    EXPECT_EQ(frameTimes(film), times);
    const std::string a = luma(single);
    const std::string b = luma(film);
    const size_t plane = 320 * 180;
    ASSERT_EQ(a.size(), plane * kFrames);
    ASSERT_EQ(b.size(), a.size());
    for (int f = 0; f < kFrames; ++f) {
        double sum = 0;
        for (size_t i = 0; i < plane; ++i)
            sum += std::abs(int(uint8_t(a[f * plane + i])) - int(uint8_t(b[f * plane + i])));
        EXPECT_LE(sum / plane, 1.0) << "frame " << f;
    }
}

struct BadCall {
    const char* args;  // PROJECT and DIR stand for the project and the test folder
    const char* error;
};

class MvnRenderChunkRefuses : public MvnRenderChunks, public ::testing::WithParamInterface<BadCall> {};

TEST_P(MvnRenderChunkRefuses, WithExitTwoAndOneLine) {
    auto fill = [&](std::string s) {
        for (auto at = s.find("PROJECT"); at != std::string::npos; at = s.find("PROJECT")) s.replace(at, 7, project);
        for (auto at = s.find("DIR"); at != std::string::npos; at = s.find("DIR")) s.replace(at, 3, dir.string());
        return s;
    };
    RenderRun r = render(fill(GetParam().args));
    EXPECT_EQ(r.status, 2);
    EXPECT_EQ(r.err, fill(GetParam().error));
    EXPECT_TRUE(fs::is_empty(dir / "out")) << "nothing is left behind";
}

INSTANTIATE_TEST_SUITE_P(
    Calls, MvnRenderChunkRefuses,
    ::testing::Values(
        BadCall{"PROJECT -o DIR/out/f.mp4 --chunk 0/2", "mvn-render: --chunk wants K/N with 1 <= K <= N <= 10000, got \"0/2\"\n"},
        BadCall{"PROJECT -o DIR/out/f.mp4 --chunk 3/4 --quiet",
                "mvn-render: --chunk 3/4: 110 frames make 3 key-frame intervals of 50; use at most 3 chunks\n"},
        BadCall{"PROJECT -o DIR/out/f%03d.png --chunk 1/2",
                "mvn-render: --chunk writes a video: the output must end in .mp4 or .mkv\n"},
        BadCall{"PROJECT -o DIR/out/f.mp4 --sound DIR/s.m4a", "mvn-render: --sound goes with --join\n"},
        BadCall{"--join DIR/out/f.mp4", "mvn-render: --join needs the segments to join\n"},
        BadCall{"--join DIR/out/f.mp4 -o DIR/out/g.mp4 DIR/a.mp4", "mvn-render: --join takes its output and segments only\n"},
        BadCall{"--join DIR/out/f.mp4 PROJECT", "mvn-render: PROJECT: Invalid data found when processing input\n"}));

}  // namespace
