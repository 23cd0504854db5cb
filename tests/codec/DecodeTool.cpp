// mvn-decode: one line per request, one BGRA file per picture, the audio as
// raw samples, and exit status 2 for a file that is not media.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

#include "TestMedia.h"
#include "MVNTestPaths.h"

using CodecTest::MediaPath;
using CodecTest::RunCommand;
namespace fs = std::filesystem;

namespace {

std::string Tool() { return std::string(MVN_BINARY_DIR) + "/bin/mvn-decode"; }

std::vector<uint8_t> ReadAll(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    return std::vector<uint8_t>(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

// The numbered .bgra files of `dir` show these frames, opaque.
void ExpectPictures(const std::string& dir, const std::vector<int>& frames) {
    for (size_t i = 0; i < frames.size(); ++i) {
        char name[64];
        std::snprintf(name, sizeof name, "%s/%05d.bgra", dir.c_str(), static_cast<int>(i));
        std::vector<uint8_t> bgra = ReadAll(name);
        ASSERT_EQ(64u * 48 * 4, bgra.size()) << name;
        EXPECT_EQ(frames[i], CodecTest::FrameNumberFromBgra(bgra.data(), 64, 48)) << name;
        EXPECT_EQ(255, bgra[3]) << name;
    }
}

}  // namespace

TEST(DecodeTool, WritesThePicturesAtTheRequestedTimes) {
    fs::remove_all("at");
    std::string out;
    ASSERT_EQ(0, RunCommand(Tool() + " '" + MediaPath("gop12.mp4") + "' --at 0.4,2,0.8,4.96 -o at", &out));
    EXPECT_EQ("request=0.4 ret=0 time=0.400000 width=64 height=48\n"
              "request=2 ret=0 time=2.000000 width=64 height=48\n"
              "request=0.8 ret=0 time=0.800000 width=64 height=48\n"
              "request=4.96 ret=0 time=4.960000 width=64 height=48\n",
              out);
    ExpectPictures("at", {10, 50, 20, 124});
}

TEST(DecodeTool, WritesTheFirstFramesInOrder) {
    fs::remove_all("first");
    std::string out;
    ASSERT_EQ(0, RunCommand(Tool() + " '" + MediaPath("bframes.mp4") + "' --frames 3 -o first", &out));
    EXPECT_EQ("request=-1 ret=0 time=0.000000 width=64 height=48\n"
              "request=-1 ret=0 time=0.040000 width=64 height=48\n"
              "request=-1 ret=0 time=0.080000 width=64 height=48\n",
              out);
    ExpectPictures("first", {0, 1, 2});
}

TEST(DecodeTool, WritesTheAudioAsRawSamples) {
    fs::remove_all("sound");
    std::string out;
    ASSERT_EQ(0, RunCommand(Tool() + " '" + MediaPath("tone_s16.wav") + "' --audio -o sound", &out));
    EXPECT_EQ("audio format=flt channels=2 rate=48000 samples=96000 bytes=768000\n", out);
    EXPECT_EQ(768000u, fs::file_size("sound/audio.raw"));
}

TEST(DecodeTool, AFileThatIsNotMediaExitsWithTwo) {
    std::string out;
    const std::string path = MediaPath("notmedia.mp4");
    EXPECT_EQ(2, RunCommand(Tool() + " '" + path + "' --frames 1 -o none 2>&1", &out));
    EXPECT_NE(std::string::npos, out.find("mvn-decode: " + path + " does not open as media")) << out;
    EXPECT_FALSE(fs::exists("none/00000.bgra"));
}

TEST(DecodeTool, BadArgumentsExitWithOneAndSayWhy) {
    std::string out;
    EXPECT_EQ(1, RunCommand(Tool() + " 2>&1", &out));
    EXPECT_NE(std::string::npos, out.find("a FILE and -o DIR are needed")) << out;
    out.clear();
    EXPECT_EQ(1, RunCommand(Tool() + " x.mp4 --at 1,two -o d 2>&1", &out));
    EXPECT_NE(std::string::npos, out.find("--at wants seconds separated by commas, got '1,two'")) << out;
}
