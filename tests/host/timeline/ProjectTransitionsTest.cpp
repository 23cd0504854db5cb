// Transitions in a project file: an entry between two clips overlaps them
// and shortens the track; a misplaced, too long or unknown one is a one-line
// error with its JSON path, and nothing stays built.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "FakeServices.h"
#include "timeline/MVNFactory.h"
#include "services/MVNTransition.h"
#include "timeline/MVNPlaylist.h"
#include "timeline/MVNProjectLoader.h"
#include "timeline/MVNRepository.h"
#include "timeline/MVNTractor.h"

using namespace Morvane;
using namespace MorvaneTest;
namespace fs = std::filesystem;

namespace {

class ProjectTransitions : public ::testing::Test {
protected:
    void SetUp() override {
        MVNRepository* repo = MVNRepository::getSingleton();
        repo->registerService(MVN_SERVICE_PRODUCER, "test.clip",
                              [](const MVNProfile* p, const MVNProperties*) -> MVNService* { return new FakeProducer(*p); });
        // What the render module registers: the service and its named
        // transitions.
        repo->registerService(MVN_SERVICE_PRODUCER, "ogre.transition.sample",
                              [](const MVNProfile* p, const MVNProperties*) -> MVNService* { return new MVNTransition(*p); });
        repo->registerTransition("fade", "fade");
        repo->registerTransition("wipeleft", "wipe");
        folder = fs::current_path() / "project";
        fs::create_directories(folder / "looks");
        std::ofstream(folder / "looks" / "swirl.glsl") << "vec4 transition(vec2 uv) { return getToColor(uv); }\n";
        baseline = MVNFactory::getSingleton()->count();
    }
    void TearDown() override {
        MVNProjectLoader::unload(project);
        EXPECT_EQ(MVNFactory::getSingleton()->count(), baseline) << "the loader left services behind";
        MVNRepository::getSingleton()->unregisterService("test.clip");
        MVNRepository::getSingleton()->unregisterService("ogre.transition.sample");
    }
    int load(const std::string& clips) {
        return loader.loadFromString(R"({ "profile": "hd_720_25p", "tracks": [ { "clips": [ )" + clips + " ] } ] }",
                                     (folder / "show.json").string(), project);
    }

    fs::path folder;
    int baseline = 0;
    MVNProjectLoader loader;
    MVNProject project;
};

TEST_F(ProjectTransitions, ATransitionOverlapsItsClipsAndShortensTheTrack) {
    ASSERT_EQ(load(R"({ "service": "test.clip", "length": 50 },
                      { "transition": "fade", "length": 10, "properties": { "transitionEasing": "ease-in" } },
                      { "service": "test.clip", "length": 40 },
                      { "transition": "looks/swirl.glsl", "length": 5 },
                      { "service": "test.clip", "length": 30 })"),
              0)
        << loader.error();
    EXPECT_EQ(project.length, 50 + 40 + 30 - 10 - 5);
    MVNTractor* tractor = MVNFactory::getSingleton()->getTractorById(project.tractorId);
    auto* track = dynamic_cast<MVNPlaylist*>(tractor->getTrack(0));
    ASSERT_NE(track, nullptr);
    std::vector<MVNPlaylistEntry> entries = track->entries();
    ASSERT_EQ(entries.size(), 5u);
    const MVNPlaylistEntryKind kinds[] = {MVN_ENTRY_CLIP, MVN_ENTRY_MIX, MVN_ENTRY_CLIP, MVN_ENTRY_MIX, MVN_ENTRY_CLIP};
    for (size_t i = 0; i < 5; ++i) EXPECT_EQ(entries[i].kind, kinds[i]) << i;
    // The first mix covers the last 10 frames of the first clip.
    EXPECT_EQ(entries[1].start, 40);
    EXPECT_EQ(entries[1].length, 10);
    auto* fade = dynamic_cast<MVNTransition*>(track->getClip(1));
    auto* swirl = dynamic_cast<MVNTransition*>(track->getClip(3));
    ASSERT_TRUE(fade && swirl);
    EXPECT_EQ(fade->producerA(), track->getClip(0));
    EXPECT_EQ(fade->producerB(), track->getClip(2));
    EXPECT_EQ(fade->getString("resource", ""), "fade");
    EXPECT_EQ(fade->getString("transitionEasing", ""), "ease-in");
    EXPECT_EQ(fade->getPlaytime(), 10);
    EXPECT_EQ(swirl->getString("resource", ""), (folder / "looks" / "swirl.glsl").string());
}

struct BadTransition {
    const char* name;
    const char* clips;
    const char* where;             // the message after "show.json: "
    const char* file = nullptr;    // ends the message, under the project's folder
};

class ProjectTransitionErrors : public ProjectTransitions, public ::testing::WithParamInterface<BadTransition> {};

TEST_P(ProjectTransitionErrors, NameTheJsonPathAndTheReason) {
    EXPECT_EQ(load(GetParam().clips), -1);
    std::string file = GetParam().file ? (folder / GetParam().file).string() : std::string();
    EXPECT_EQ(loader.error(), (folder / "show.json").string() + ": " + GetParam().where + file);
    EXPECT_EQ(MVNFactory::getSingleton()->count(), baseline);
}

#define CLIP(n) "{ \"service\": \"test.clip\", \"length\": " #n " }"

INSTANTIATE_TEST_SUITE_P(
    Cases, ProjectTransitionErrors,
    ::testing::Values(
        BadTransition{"AtTheStart", R"({ "transition": "fade", "length": 5 }, )" CLIP(20),
                      "tracks[0].clips[0]: a transition needs a clip before it; this one starts the track"},
        BadTransition{"AtTheEnd", CLIP(20) R"(, { "transition": "fade", "length": 5 })",
                      "tracks[0].clips[1]: a transition needs a clip after it; this one ends the track"},
        BadTransition{"NextToABlank", CLIP(20) R"(, { "transition": "fade", "length": 5 }, { "blank": 10 })",
                      "tracks[0].clips[1]: a transition needs a clip after it, not a blank or a transition"},
        BadTransition{"LongerThanTheClipBefore", CLIP(8) R"(, { "transition": "fade", "length": 10 }, )" CLIP(20),
                      "tracks[0].clips[1].length: 10 frames are longer than the clip before (tracks[0].clips[0], 8 "
                      "frames)"},
        BadTransition{"LongerThanTheClipAfter", CLIP(20) R"(, { "transition": "fade", "length": 10 }, )" CLIP(9),
                      "tracks[0].clips[1].length: 10 frames are longer than the clip after (tracks[0].clips[2], 9 "
                      "frames)"},
        BadTransition{"BothSidesTakeTooMuch",
                      CLIP(20) R"(, { "transition": "fade", "length": 10 }, )" CLIP(15) R"(, { "transition": "fade", "length": 10 }, )" CLIP(20),
                      "tracks[0].clips[3].length: the transitions on both sides of tracks[0].clips[2] take 20 of its 15 "
                      "frames"},
        BadTransition{"UnknownName", CLIP(20) R"(, { "transition": "fadee", "length": 5 }, )" CLIP(20),
                      "tracks[0].clips[1].transition: unknown transition \"fadee\""},
        BadTransition{"MissingFile", CLIP(20) R"(, { "transition": "looks/twirl.glsl", "length": 5 }, )" CLIP(20),
                      "tracks[0].clips[1].transition: file not found: ", "looks/twirl.glsl"},
        BadTransition{"UnknownKey", CLIP(20) R"(, { "transition": "fade", "lenght": 5 }, )" CLIP(20),
                      "tracks[0].clips[1].lenght: unknown key"}),
    [](const ::testing::TestParamInfo<BadTransition>& info) { return std::string(info.param.name); });

}  // namespace
