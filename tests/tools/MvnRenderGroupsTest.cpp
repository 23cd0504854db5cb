// mvn-render refuses a group without tracks and a grid cell of a kind no
// service shows: one line with the JSON path, exit status 2, nothing drawn.
#include <gtest/gtest.h>

#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include "MVNTestPaths.h"

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
        // A folder of each test's own: what one test leaves behind never
        // reaches another's checks.
        const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
        dir = fs::current_path() / "render" / (std::string(info->test_suite_name()) + "." + info->name());
        fs::remove_all(dir);
        fs::create_directories(dir);
        project = (dir / "show.json").string();
    }
    fs::path dir;
    std::string project;
};

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
