// Joining chunk segments without re-encoding. The segments and the single
// render they are compared with are encoded by the ffmpeg command from the
// same moving test picture, with the key-frame interval mvn-render uses, so
// the join is checked on its own: frame count, timestamps and pictures.
#include <gtest/gtest.h>

#include <sys/wait.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "MVNSegmentJoin.h"

namespace fs = std::filesystem;
using namespace Morvane;

namespace {

constexpr int kWidth = 320;
constexpr int kHeight = 180;
constexpr int kFrames = 120;

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

int run(const std::string& cmd) {
    int rc = std::system(cmd.c_str());
    return WIFEXITED(rc) ? WEXITSTATUS(rc) : -1;
}

// Frames [first, last] of the test picture as H.264 with a key frame every
// 50 frames, tagged as chunk `chunk` when it is not empty.
std::string encode(const fs::path& path, int first, int last, const std::string& chunk, const std::string& frames,
                   const std::string& size = "320x180") {
    std::string cmd = "ffmpeg -v error -y -f lavfi -i testsrc2=size=" + size +
                      ":rate=25 -vf trim=start_frame=" + std::to_string(first) + ":end_frame=" +
                      std::to_string(last + 1) +
                      ",setpts=PTS-STARTPTS -c:v libx264 -preset veryfast -crf 20 -g 50 -pix_fmt yuv420p";
    if (!chunk.empty())
        cmd += " -movflags use_metadata_tags -metadata mvn_chunk=" + chunk + " -metadata mvn_frames=" + frames;
    cmd += " " + path.string();
    EXPECT_EQ(run(cmd), 0) << cmd;
    return path.string();
}

// Luma planes of every frame, in presentation order.
std::string lumaOf(const std::string& path) {
    return capture("ffmpeg -v error -i " + path + " -map 0:v -f rawvideo -pix_fmt gray -");
}

// One line a frame; the encoder's side data (each chunk starts with its own
// version note) is left out.
std::string frameTimes(const std::string& path) {
    return capture("ffprobe -v error -select_streams v -show_entries frame=pts_time -of csv=p=0 " + path +
                   " | cut -d, -f1 | grep .");
}

class SegmentJoin : public ::testing::Test {
protected:
    void SetUp() override {
        dir = fs::current_path() / ::testing::UnitTest::GetInstance()->current_test_info()->name();
        fs::create_directories(dir);
    }
    // The test picture cut into `ranges`, tagged K/N with the ranges given.
    std::vector<std::string> chunks(const std::vector<std::pair<int, int>>& ranges) {
        std::vector<std::string> paths;
        const std::string n = std::to_string(ranges.size());
        for (size_t k = 0; k < ranges.size(); ++k) {
            const auto [a, b] = ranges[k];
            paths.push_back(encode(dir / ("seg" + std::to_string(k + 1) + ".mp4"), a, b, std::to_string(k + 1) + "/" + n,
                                   std::to_string(a) + ":" + std::to_string(b)));
        }
        return paths;
    }
    fs::path dir;
};

TEST_F(SegmentJoin, JoinedChunksHaveTheSingleRendersFramesTimesAndPictures) {
    const std::string single = encode(dir / "single.mp4", 0, kFrames - 1, "", "");
    std::vector<std::string> segs = chunks({{0, 49}, {50, 99}, {100, 119}});
    // Given out of order: the tags put them in place.
    std::swap(segs[0], segs[2]);
    const std::string out = (dir / "joined.mp4").string();
    MVNSegmentJoin join;
    ASSERT_EQ(join.join(out, segs, ""), MVNSegmentJoin::Joined) << join.error();
    EXPECT_EQ(join.frames(), kFrames);
    EXPECT_FALSE(fs::exists(dir / ".joined.mp4.part.mp4"));

    EXPECT_EQ(frameTimes(out), frameTimes(single));
    const std::string a = lumaOf(out);
    const std::string b = lumaOf(single);
    ASSERT_EQ(a.size(), static_cast<size_t>(kWidth) * kHeight * kFrames);
    ASSERT_EQ(b.size(), a.size());
    // Only the rate control at the chunk borders may differ.
    const size_t plane = static_cast<size_t>(kWidth) * kHeight;
    for (int f = 0; f < kFrames; ++f) {
        double sum = 0;
        for (size_t i = 0; i < plane; ++i)
            sum += std::abs(int(uint8_t(a[f * plane + i])) - int(uint8_t(b[f * plane + i])));
        EXPECT_LE(sum / plane, 1.0) << "frame " << f;
    }
    // The stream is copied, not re-encoded: the packets are the segments'.
    const std::string probe = "ffprobe -v error -select_streams v -show_entries packet=size,flags -of csv=p=0 ";
    EXPECT_EQ(capture(probe + out), capture(probe + segs[2]) + capture(probe + segs[1]) + capture(probe + segs[0]));
}

struct SoundFile {
    const char* name;
    const char* encode;  // ffmpeg output options
    bool copied;         // the packets are the file's
};

class SegmentJoinSound : public SegmentJoin, public ::testing::WithParamInterface<SoundFile> {};

TEST_P(SegmentJoinSound, RenderedOnceGoesInBesideTheVideoCutAtItsEnd) {
    std::vector<std::string> segs = chunks({{0, 49}, {50, 119}});
    const std::string sound = (dir / GetParam().name).string();
    // 7 s of a 440 Hz tone (amplitude 1/8), longer than the 4.8 s of video.
    ASSERT_EQ(run("ffmpeg -v error -y -f lavfi -i sine=frequency=440:duration=7:sample_rate=48000 -ac 2 " +
                  std::string(GetParam().encode) + " " + sound),
              0);
    const std::string out = (dir / "joined.mp4").string();
    MVNSegmentJoin join;
    ASSERT_EQ(join.join(out, segs, sound), MVNSegmentJoin::Joined) << join.error();
    EXPECT_EQ(capture("ffprobe -v error -show_entries stream=codec_type,codec_name -of csv=p=0 " + out),
              "h264,video\naac,audio\n");
    const double soundEnd = std::atof(
        capture("ffprobe -v error -select_streams a -show_entries stream=duration -of csv=p=0 " + out).c_str());
    // 120 frames at 25 a second; the sound ends within one AAC frame (1024 samples) of them.
    EXPECT_NEAR(soundEnd, 4.8, 1024.0 / 48000);
    EXPECT_EQ(lumaOf(out).size(), static_cast<size_t>(kWidth) * kHeight * kFrames);
    const std::string probe = "ffprobe -v error -select_streams a -show_entries packet=size -of csv=p=0 ";
    const std::string joined = capture(probe + out);
    ASSERT_FALSE(joined.empty());
    if (GetParam().copied) {
        const std::string all = capture(probe + sound);
        EXPECT_EQ(all.compare(0, joined.size(), joined), 0) << "the sound is the file's, packet for packet";
    }
    // The tone plays throughout at its level: the RMS of a sine of amplitude 1/8 is 0.0884.
    const std::string pcm = capture("ffmpeg -v error -i " + out + " -map 0:a -f f32le -ac 1 -");
    const size_t n = pcm.size() / sizeof(float);
    ASSERT_GT(n, 48000u * 4);
    const float* s = reinterpret_cast<const float*>(pcm.data());
    for (size_t from = 2048; from + 4800 < n - 2048; from += 4800) {
        double sum = 0;
        for (size_t i = from; i < from + 4800; ++i) sum += double(s[i]) * s[i];
        EXPECT_NEAR(std::sqrt(sum / 4800), 0.0884, 0.004) << "at sample " << from;
    }
}

INSTANTIATE_TEST_SUITE_P(Files, SegmentJoinSound,
                         ::testing::Values(SoundFile{"sound.m4a", "-c:a aac", true},
                                           SoundFile{"sound.wav", "-c:a pcm_f32le", false}),
                         [](const ::testing::TestParamInfo<SoundFile>& info) {
                             return std::string(info.param.copied ? "AacCopied" : "PcmEncoded");
                         });

struct BadSet {
    const char* name;
    // What goes wrong, done to a set of three good chunks of frames 0:49, 50:99, 100:119.
    void (*spoil)(const fs::path& dir, std::vector<std::string>& segs);
    const char* error;  // with DIR for the test's folder
};

class SegmentJoinRefuses : public SegmentJoin, public ::testing::WithParamInterface<BadSet> {};

TEST_P(SegmentJoinRefuses, ASetThatIsNotOneVideo) {
    std::vector<std::string> segs = chunks({{0, 49}, {50, 99}, {100, 119}});
    GetParam().spoil(dir, segs);
    const std::string out = (dir / "joined.mp4").string();
    MVNSegmentJoin join;
    EXPECT_EQ(join.join(out, segs, ""), MVNSegmentJoin::BadInput);
    std::string expected = GetParam().error;
    for (auto at = expected.find("DIR"); at != std::string::npos; at = expected.find("DIR"))
        expected.replace(at, 3, dir.string());
    EXPECT_EQ(join.error(), expected);
    EXPECT_FALSE(fs::exists(out));
    EXPECT_FALSE(fs::exists(dir / ".joined.mp4.part.mp4"));
}

INSTANTIATE_TEST_SUITE_P(
    Sets, SegmentJoinRefuses,
    ::testing::Values(
        BadSet{"Missing", [](const fs::path&, std::vector<std::string>& s) { s.erase(s.begin() + 1); },
               "chunk 2/3 is missing"},
        BadSet{"MissingLast", [](const fs::path&, std::vector<std::string>& s) { s.pop_back(); },
               "chunk 3/3 is missing"},
        BadSet{"Twice", [](const fs::path&, std::vector<std::string>& s) { s.push_back(s[1]); },
               "chunk 2/3 is given twice (DIR/seg2.mp4 and DIR/seg2.mp4)"},
        BadSet{"Untagged",
               [](const fs::path& d, std::vector<std::string>& s) { s[1] = encode(d / "plain.mp4", 50, 99, "", ""); },
               "DIR/plain.mp4: not a segment written by mvn-render --chunk"},
        BadSet{"OtherRender",
               [](const fs::path& d, std::vector<std::string>& s) { s[1] = encode(d / "x.mp4", 50, 99, "2/4", "50:99"); },
               "chunk 2/4 (DIR/x.mp4) belongs to a render of 4 chunks, chunk 1/3 (DIR/seg1.mp4) to one of 3"},
        BadSet{"Gap",
               [](const fs::path& d, std::vector<std::string>& s) { s[1] = encode(d / "x.mp4", 60, 99, "2/3", "60:99"); },
               "chunk 2/3 (DIR/x.mp4) holds frames 60:99, which do not follow frame 49 of chunk 1/3 (DIR/seg1.mp4)"},
        BadSet{"OtherSize",
               [](const fs::path& d, std::vector<std::string>& s) {
                   s[1] = encode(d / "x.mp4", 50, 99, "2/3", "50:99", "160x90");
               },
               "chunk 2/3 (DIR/x.mp4) was encoded differently from chunk 1/3 (DIR/seg1.mp4)"},
        BadSet{"ShortOfItsTags",
               [](const fs::path& d, std::vector<std::string>& s) { s[1] = encode(d / "x.mp4", 50, 89, "2/3", "50:99"); },
               "chunk 2/3 (DIR/x.mp4) holds 40 frames where its tags say 50 (50:99)"},
        BadSet{"NotAVideo",
               [](const fs::path& d, std::vector<std::string>& s) { s[0] = (d / "none.mp4").string(); },
               "DIR/none.mp4: No such file or directory"}),
    [](const ::testing::TestParamInfo<BadSet>& info) { return std::string(info.param.name); });

}  // namespace
