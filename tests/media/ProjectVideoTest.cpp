// Video clips in project files: a length that defaults to the rest of the
// file, the clip's volume, and every refusal as one line with its JSON path.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "MediaTestSupport.h"
#include "timeline/MVNProjectLoader.h"
#include "timeline/MVNTractor.h"

using namespace Morvane;
using MediaTest::mediaPath;

namespace {

// A project of one video clip: `clip` is the inside of its JSON object.
std::string project(const std::string& clip) {
    return R"({ "profile": { "width": 160, "height": 90, "fps": 25 },
                "tracks": [ { "clips": [ { "blank": 5 }, {)" + clip + R"(} ] } ] })";
}

std::string file(const std::string& name) { return "\"resource\": \"" + mediaPath(name) + "\""; }

struct Refusal {
    const char* name;
    std::string clip;
    std::string error;  // after "p.json: "
};

class ProjectVideoRefusal : public ::testing::TestWithParam<Refusal> {
protected:
    static void SetUpTestSuite() { MediaTest::loadMediaModule(); }
};

}  // namespace

TEST_P(ProjectVideoRefusal, NamesThePathAndTheReasonOnOneLine) {
    MVNProjectLoader loader;
    MVNProject p;
    EXPECT_EQ(loader.readFromString(project(GetParam().clip), "p.json", p), -1);
    EXPECT_EQ(loader.error(), "p.json: " + GetParam().error);
}

INSTANTIATE_TEST_SUITE_P(
    Clips, ProjectVideoRefusal,
    ::testing::Values(
        Refusal{"NoFile", R"("service": "codec.video")", "tracks[0].clips[1].resource: missing: the file to show"},
        Refusal{"MissingFile", R"("service": "codec.video", "resource": "/nowhere/film.mp4")",
                "tracks[0].clips[1].resource: file not found: /nowhere/film.mp4"},
        Refusal{"NotMedia", R"("service": "codec.video", )" + file("notmedia.mp4"),
                "tracks[0].clips[1].resource: does not open as media: " + mediaPath("notmedia.mp4")},
        Refusal{"SoundOnly", R"("service": "codec.video", )" + file("tone.wav"),
                "tracks[0].clips[1].resource: no picture stream in " + mediaPath("tone.wav")},
        Refusal{"InPastTheEnd", R"("service": "codec.video", "in": 100, )" + file("gop12_25.mp4"),
                "tracks[0].clips[1].in: lies past the end of the file (100 frames)"},
        Refusal{"LengthPastTheEnd", R"("service": "codec.video", "in": 90, "length": 11, )" + file("gop12_25.mp4"),
                "tracks[0].clips[1].length: runs past the end of the file: at most 10 frames after in 90"},
        Refusal{"GifThatIsNot", R"("service": "codec.gif", )" + file("notmedia.mp4"),
                "tracks[0].clips[1].resource: does not open as media: " + mediaPath("notmedia.mp4")},
        Refusal{"WrongVolume", R"("service": "codec.video", "properties": { "volume": [1] }, )" + file("gop12_25.mp4"),
                "tracks[0].clips[1].properties.volume: expected a string, a number or a boolean, got array"}),
    [](const ::testing::TestParamInfo<Refusal>& info) { return std::string(info.param.name); });

TEST(ProjectVideo, LengthDefaultsToTheRestOfTheFileAndVolumeReachesTheClip) {
    MediaTest::loadMediaModule();
    MVNProjectLoader loader;
    MVNProject p;
    ASSERT_EQ(loader.loadFromString(project(R"("service": "codec.video", "in": 30, "properties": { "volume": 0.5 }, )" +
                                            file("gop12_25.mp4")),
                                    "p.json", p),
              0)
        << loader.error();
    // A blank of 5, then 100 - 30 frames of the file.
    EXPECT_EQ(p.length, 75);
    EXPECT_TRUE(p.sound);
    MVNProducer* clip = nullptr;
    for (const std::string& id : p.serviceIds) {
        MVNProducer* candidate = getProducerById(id);
        if (candidate != nullptr && candidate->getString("service", "") == "codec.video") clip = candidate;
    }
    ASSERT_NE(clip, nullptr);
    EXPECT_EQ(clip->getIn(), 30);
    EXPECT_EQ(clip->getPlaytime(), 70);
    EXPECT_DOUBLE_EQ(clip->getDouble("volume", 1.0), 0.5);
    MVNProjectLoader::unload(p);
}
