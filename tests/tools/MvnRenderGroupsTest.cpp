// mvn-render with groups and grids: the composed picture of a project that
// holds both, and one line with the JSON path and exit status 2 for a group
// without tracks or a grid cell that can't be made.
#include <gtest/gtest.h>

#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

namespace fs = std::filesystem;

namespace {

struct RenderRun {
    int status = -1;
    std::string err;
    std::string out;
};

RenderRun render(const std::string& args) {
    RenderRun r;
    const std::string errFile = (fs::current_path() / "stderr.txt").string();
    const std::string outFile = (fs::current_path() / "stdout.bin").string();
    std::string cmd = std::string(MVN_BINARY_DIR) + "/bin/mvn-render " + args + " >" + outFile + " 2>" + errFile;
    int rc = std::system(cmd.c_str());
    r.status = WIFEXITED(rc) ? WEXITSTATUS(rc) : -1;
    std::ifstream e(errFile), o(outFile, std::ios::binary);
    r.err.assign(std::istreambuf_iterator<char>(e), {});
    r.out.assign(std::istreambuf_iterator<char>(o), {});
    return r;
}

class MvnRenderGroups : public ::testing::Test {
protected:
    void SetUp() override {
        dir = fs::current_path() / "render";
        fs::create_directories(dir);
        project = (dir / "show.json").string();
    }
    fs::path dir;
    std::string project;
};

TEST_F(MvnRenderGroups, AGridInsideAGroupComposes) {
    // A 64x64 picture: blue below; a group on the right half holds a 1x2
    // grid, red above green once the group's picture is scaled into it.
    std::ofstream(project) << R"({ "profile": { "width": 64, "height": 64, "fps": 25 }, "tracks": [
        { "clips": [ { "service": "ogre.color", "length": 2, "properties": { "color": "#0000ffff" } } ] },
        { "clips": [ { "service": "ogre.group.sample", "length": 2, "geometry": "[32:0 32x64]", "tracks": [
            { "clips": [ { "service": "ogre.grid", "length": 2, "properties": { "row": 2, "column": 1,
                "clip.0.0.resource": "#ff0000ff", "clip.1.0.resource": "#00ff00ff" } } ] } ] } ] } ] })";
    RenderRun r = render(project + " -o - --frames 1:1 --quiet");
    ASSERT_EQ(r.status, 0) << r.err;
    ASSERT_EQ(r.out.size(), 64u * 64 * 4);
    auto px = [&](int x, int y) {
        const auto* p = reinterpret_cast<const uint8_t*>(r.out.data()) + (y * 64 + x) * 4;  // R,G,B,A
        return std::string{char('0' + p[0] / 255), char('0' + p[1] / 255), char('0' + p[2] / 255)};
    };
    EXPECT_EQ(px(10, 10), "001");
    EXPECT_EQ(px(10, 54), "001");
    EXPECT_EQ(px(48, 10), "100");
    EXPECT_EQ(px(48, 54), "010");
}

TEST_F(MvnRenderGroups, ABadGroupOrGridExitsWithTwoAndOneLine) {
    std::ofstream(project) << R"({ "profile": { "width": 64, "height": 64, "fps": 25 }, "tracks": [
        { "clips": [ { "service": "ogre.group.sample", "length": 2 } ] } ] })";
    RenderRun r = render(project + " -o - --frames 0:0");
    EXPECT_EQ(r.status, 2);
    EXPECT_EQ(r.err, "mvn-render: " + project + ": tracks[0].clips[0].tracks: missing: a group composes its own tracks\n");

    std::ofstream(dir / "notes.txt") << "not a clip";
    std::ofstream(project) << R"({ "profile": { "width": 64, "height": 64, "fps": 25 }, "tracks": [
        { "clips": [ { "service": "ogre.grid", "length": 2, "properties": { "row": 1, "column": 1,
            "clip.0.0.resource": "notes.txt" } } ] } ] })";
    r = render(project + " -o - --frames 0:0");
    EXPECT_EQ(r.status, 2);
    EXPECT_EQ(r.err, "mvn-render: " + project +
                         ": tracks[0].clips[0].properties.clip.0.0.resource: a cell shows a colour \"#rrggbb\" or a "
                         "file of .jpg, .jpeg, .png, .bmp, .webp, .mp4, .mov, .flv, .gif, not \"notes.txt\"\n");
}

}  // namespace
