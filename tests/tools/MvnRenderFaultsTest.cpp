// mvn-render when the world fails under it: standard output on a full disk,
// a reader that closes the pipe early, a video file that ends in the middle
// of its stream. Each ends with one line that says what happened and an
// exit status, never a crash; the same render without the fault succeeds.
#include <gtest/gtest.h>

#include <sys/wait.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include "MVNTestPaths.h"

namespace fs = std::filesystem;

namespace {

struct ToolRun {
    int status = -1;  // -1: ended by a signal
    std::string err;
    size_t outBytes = 0;
};

// Runs mvn-render with `args`, standard output going through `pipeTail`
// (a shell redirection or pipe), in `dir`. The tool's own exit status is
// kept even behind a pipe.
ToolRun runTool(const fs::path& dir, const std::string& args, const std::string& pipeTail) {
    ToolRun r;
    const fs::path err = dir / "stderr.txt", out = dir / "stdout.bin", status = dir / "status.txt";
    fs::remove(status);
    std::string cmd = "{ " + std::string(MVN_BINARY_DIR) + "/bin/mvn-render " + args + " 2>" + err.string() +
                      "; echo $? >" + status.string() + "; } " + pipeTail;
    if (pipeTail.empty()) cmd += " >" + out.string();
    std::system(cmd.c_str());
    std::ifstream s(status), e(err);
    int code = -1;
    if (s >> code) r.status = code > 128 ? -1 : code;
    r.err.assign(std::istreambuf_iterator<char>(e), {});
    std::error_code ec;
    if (fs::exists(out, ec)) r.outBytes = fs::file_size(out, ec);
    return r;
}

int lines(const std::string& text) { return static_cast<int>(std::count(text.begin(), text.end(), '\n')); }

std::string project(const std::string& clip) {
    return R"({ "profile": { "width": 320, "height": 180, "fps": 25 },
  "tracks": [ { "clips": [ )" + clip + R"( ] } ] })";
}

const char* const kColour = R"({ "service": "ogre.color", "length": 10, "properties": { "color": "#ff0000ff" } })";

struct FaultCase {
    const char* name;
    const char* clip;      // the clip of the faulty project (kColour when null)
    const char* pipeTail;  // where standard output goes while the fault lasts
    int status;            // the exit status the fault gives
    const char* message;   // on stderr exactly once
    bool quiet;            // --quiet: the message is the only line
};

class MvnRenderFaults : public ::testing::TestWithParam<FaultCase> {
protected:
    void SetUp() override {
        dir = fs::current_path() / "faults" / GetParam().name;
        fs::remove_all(dir);
        fs::create_directories(dir);
        // A video of 50 pictures cut off after its first third: the header
        // promises all 50, the stream ends early.
        std::string make = "ffmpeg -hide_banner -loglevel error -nostdin -y -f lavfi -i testsrc=size=320x180:rate=25 "
                           "-t 2 -c:v mpeg4 -g 10 " + (dir / "whole.mkv").string();
        ASSERT_EQ(std::system(make.c_str()), 0);
        std::ifstream in(dir / "whole.mkv", std::ios::binary);
        std::string bytes((std::istreambuf_iterator<char>(in)), {});
        std::ofstream(dir / "cut.mkv", std::ios::binary) << bytes.substr(0, bytes.size() / 3);
    }
    std::string write(const std::string& name, const std::string& text) {
        std::ofstream(dir / name) << text;
        return (dir / name).string();
    }
    fs::path dir;
};

TEST_P(MvnRenderFaults, OneLineAnExitStatusAndTheRenderWorksOnceTheFaultIsGone) {
    const FaultCase& c = GetParam();
    const std::string faulty = write("faulty.json", project(c.clip != nullptr ? c.clip : kColour));
    ToolRun r = runTool(dir, faulty + " -o -" + (c.quiet ? " --quiet" : ""), c.pipeTail);
    EXPECT_EQ(r.status, c.status) << r.err;
    if (c.quiet) EXPECT_EQ(lines(r.err), 1) << r.err;
    const size_t at = r.err.find(c.message);
    ASSERT_NE(at, std::string::npos) << r.err;
    EXPECT_EQ(r.err.find(c.message, at + 1), std::string::npos) << "logged more than once:\n" << r.err;

    const std::string healthy = write("healthy.json", project(kColour));
    ToolRun ok = runTool(dir, healthy + " -o - --quiet", "");
    EXPECT_EQ(ok.status, 0) << ok.err;
    EXPECT_EQ(ok.outBytes, 10u * 320 * 180 * 4);
}

INSTANTIATE_TEST_SUITE_P(
    Faults, MvnRenderFaults,
    ::testing::Values(
        FaultCase{"DiskFull", nullptr, ">/dev/full", 1,
                  "mvn-render: cannot write to standard output: No space left on device", true},
        FaultCase{"ReaderClosesThePipeEarly", nullptr, "| head -c 1000 >/dev/null", 1,
                  "mvn-render: cannot write to standard output: Broken pipe", true},
        FaultCase{"VideoEndsMidStream",
                  R"({ "service": "codec.video", "resource": "cut.mkv", "length": 50 })", ">/dev/null", 0,
                  "mvn-render: error: codec::FFmpegDecoderImplAsync: seek video decode error", false}),
    [](const ::testing::TestParamInfo<FaultCase>& info) { return info.param.name; });

}  // namespace
