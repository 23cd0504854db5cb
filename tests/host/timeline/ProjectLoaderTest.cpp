// The project loader: the timeline it builds from a file (tracks, filters,
// groups that nest, transitions that overlap their clips), and one-line
// errors that name the file, the JSON path and the reason, with nothing left
// built.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "FakeServices.h"
#include "timeline/MVNFactory.h"
#include "services/MVNGroup.h"
#include "services/MVNTransition.h"
#include "timeline/MVNPlaylist.h"
#include "timeline/MVNProjectLoader.h"
#include "timeline/MVNRepository.h"
#include "timeline/MVNTractor.h"

using namespace Morvane;
using namespace MorvaneTest;
namespace fs = std::filesystem;

namespace {

// Fakes under the names a project file uses: the loader checks the forms of
// the module's services, the fakes only have to exist.
const char* const kServices[] = {"test.clip", "test.filter", "ogre.filter.canvas", "ogre.filter.sample2",
                                 "ogre.group.sample", "ogre.grid", "ogre.transition.sample"};

class ProjectLoader : public ::testing::Test {
protected:
    void SetUp() override {
        MVNRepository* repo = MVNRepository::getSingleton();
        repo->registerService(MVN_SERVICE_PRODUCER, "test.clip",
                              [](const MVNProfile* p, const MVNProperties* props) -> MVNService* {
                                  // "refuse" lets a test make a build fail half-way.
                                  if (props->getBoolean("refuse", false)) return nullptr;
                                  return new FakeProducer(*p);
                              });
        auto filter = [](const MVNProfile* p, const MVNProperties* props) -> MVNService* {
            return new StampFilter(*p, props->getInt32("tag", 1));
        };
        auto group = [](const MVNProfile* p, const MVNProperties*) -> MVNService* { return new MVNGroup(*p); };
        for (const char* name : {"test.filter", "ogre.filter.canvas", "ogre.filter.sample2"})
            repo->registerService(MVN_SERVICE_FILTER, name, filter);
        for (const char* name : {"ogre.group.sample", "ogre.grid"})
            repo->registerService(MVN_SERVICE_PRODUCER, name, group);
        repo->registerService(MVN_SERVICE_PRODUCER, "ogre.transition.sample",
                              [](const MVNProfile* p, const MVNProperties*) -> MVNService* { return new MVNTransition(*p); });
        repo->registerTransition("fade", "fade");
        repo->registerTransition("wipeleft", "wipe");
        folder = fs::current_path() / "project";
        fs::create_directories(folder / "pictures");
        fs::create_directories(folder / "looks");
        std::ofstream(folder / "pictures" / "beach.png") << "not really a picture";
        std::ofstream(folder / "looks" / "swirl.glsl") << "vec4 transition(vec2 uv) { return getToColor(uv); }\n";
        baseline = MVNFactory::getSingleton()->count();
    }
    void TearDown() override {
        MVNProjectLoader::unload(project);
        EXPECT_EQ(MVNFactory::getSingleton()->count(), baseline) << "the loader left services behind";
        for (const char* name : kServices) MVNRepository::getSingleton()->unregisterService(name);
    }
    int load(const std::string& text) {
        return loader.loadFromString(text, (folder / "show.json").string(), project);
    }
    // A project of one track of `clips`.
    int loadClips(const std::string& clips) {
        return load(R"({ "profile": "hd_720_25p", "tracks": [ { "clips": [ )" + clips + " ] } ] }");
    }
    // Clip `index` of track `track` of a tractor.
    static MVNProducer* clipOf(MVNProducer* timeline, int track, int index) {
        auto* tractor = dynamic_cast<MVNTractor*>(timeline);
        auto* playlist = tractor ? dynamic_cast<MVNPlaylist*>(tractor->getTrack(track)) : nullptr;
        return playlist ? playlist->getClip(index) : nullptr;
    }

    fs::path folder;
    int baseline = 0;
    MVNProjectLoader loader;
    MVNProject project;
};

TEST_F(ProjectLoader, BuildsOnePlaylistPerTrackWithZOrderFromTheTrack) {
    ASSERT_EQ(load(R"({
        "profile": "hd_720_25p",
        "tracks": [
          { "clips": [ { "service": "test.clip", "length": 50, "properties": { "mark": 3 } },
                       { "blank": 25 },
                       { "service": "test.clip", "resource": "pictures/beach.png", "length": 75, "in": 10 } ] },
          { "clips": [ { "service": "test.clip", "length": 150, "geometry": "[0:0 320x180]" } ] }
        ]})"),
              0)
        << loader.error();
    EXPECT_EQ(project.profile.width(), 1280);
    EXPECT_EQ(project.length, 150);
    MVNTractor* tractor = MVNFactory::getSingleton()->getTractorById(project.tractorId);
    ASSERT_NE(tractor, nullptr);
    ASSERT_EQ(tractor->count(), 2);

    auto* lower = dynamic_cast<MVNPlaylist*>(tractor->getTrack(0));
    auto* upper = dynamic_cast<MVNPlaylist*>(tractor->getTrack(1));
    ASSERT_TRUE(lower && upper);
    EXPECT_EQ(lower->totalLength(), 150);
    MVNProducer* first = lower->getClip(0);
    MVNProducer* picture = lower->getClip(2);
    MVNProducer* top = upper->getClip(0);
    EXPECT_EQ(first->getInt32("zOrder", -1), 1);
    EXPECT_EQ(top->getInt32("zOrder", -1), 2);
    EXPECT_EQ(first->getInt32("mark", 0), 3);
    EXPECT_EQ(picture->getIn(), 10);
    EXPECT_EQ(picture->getOut(), 84);
    EXPECT_TRUE(lower->getClip(1)->isBlank());
    // The picture is found by name in its folder, which the renderer searches.
    EXPECT_EQ(picture->getString("resource", ""), "beach.png");
    EXPECT_EQ(project.resourceLocations.front(), folder.string());
    EXPECT_NE(std::find(project.resourceLocations.begin(), project.resourceLocations.end(),
                        (folder / "pictures").string()),
              project.resourceLocations.end());
    // Top-left [0:0 320x180] is the bottom-left corner's [0:540 320x180].
    MVNRect g = top->getGeometry();
    EXPECT_FLOAT_EQ(g.x, 0);
    EXPECT_FLOAT_EQ(g.y, 540);
    EXPECT_FLOAT_EQ(g.width, 320);
    EXPECT_FLOAT_EQ(g.height, 180);
}

TEST_F(ProjectLoader, AttachesFiltersInOrderAndTakesAnExplicitProfile) {
    ASSERT_EQ(load(R"({
        "profile": { "width": 320, "height": 180, "fps": 29.97 },
        "tracks": [ { "clips": [ { "service": "test.clip", "length": 5,
            "filters": [ { "service": "test.filter", "properties": { "tag": 1 } },
                         { "service": "test.filter", "properties": { "tag": 2 } } ] } ] } ] })"),
              0)
        << loader.error();
    EXPECT_EQ(project.profile.fpsNum(), 30000);
    EXPECT_EQ(project.profile.fpsDen(), 1001);
    MVNTractor* tractor = MVNFactory::getSingleton()->getTractorById(project.tractorId);
    MVNProducer* clip = dynamic_cast<MVNPlaylist*>(tractor->getTrack(0))->getClip(0);
    MVNFrame* frame = nullptr;
    ASSERT_EQ(clip->getImage(3, &frame), 0);
    // Position 3, stamped by filter 1 and then by filter 2.
    EXPECT_EQ(frame->id(), 312);
    MVNFrame::pushBackPool(frame);
}

TEST_F(ProjectLoader, ProfileOverrideWins) {
    ASSERT_EQ(loader.loadFromString(R"({ "profile": "hd_720_25p",
        "tracks": [ { "clips": [ { "service": "test.clip", "length": 5 } ] } ] })",
                                    (folder / "show.json").string(), project, "640x360@30"),
              0)
        << loader.error();
    EXPECT_EQ(project.profile.width(), 640);
    EXPECT_EQ(project.profile.fps(), 30);
}

// A profile given beside the file is refused with the reason, before any
// renderer could fail on it.
TEST_F(ProjectLoader, ProfileOverrideSaysWhyItIsRefused) {
    const std::pair<const char*, const char*> cases[] = {
        {"641x481@25", "--profile: width and height must be even, got 641x481"},
        {"20000x20000@25", "--profile: unknown profile \"20000x20000@25\": at most 16384 pixels a side"},
        {"640x360@0", "--profile: unknown profile \"640x360@0\": the rate is not a number of frames a second up to "
                      "10000 or a fraction N/D"},
    };
    for (const auto& [name, message] : cases) {
        EXPECT_EQ(loader.readFromString(R"({ "profile": "hd_720_25p",
            "tracks": [ { "clips": [ { "service": "test.clip", "length": 5 } ] } ] })",
                                        (folder / "show.json").string(), project, name),
                  -1);
        EXPECT_EQ(loader.error(), (folder / "show.json").string() + ": " + message);
    }
}

TEST_F(ProjectLoader, ARefusalHalfWayDestroysWhatWasBuilt) {
    EXPECT_EQ(load(R"({ "profile": "hd_720_25p", "tracks": [ { "clips": [
        { "service": "test.clip", "length": 5 },
        { "service": "test.clip", "length": 5, "properties": { "refuse": true } } ] } ] })"),
              -1);
    EXPECT_EQ(loader.error(), (folder / "show.json").string() +
                                  ": tracks[0].clips[1]: service \"test.clip\" refused the clip (see the log)");
    EXPECT_EQ(MVNFactory::getSingleton()->count(), baseline);
}

TEST_F(ProjectLoader, AGroupHoldsItsTracksAndGroupsNest) {
    ASSERT_EQ(loadClips(R"({ "service": "ogre.group.sample", "length": 40, "in": 5, "geometry": "[0:0 640x360]",
        "tracks": [
          { "clips": [ { "service": "test.clip", "length": 60, "properties": { "mark": 1 } } ] },
          { "clips": [ { "blank": 10 },
                       { "service": "ogre.group.sample", "length": 20, "tracks": [
                         { "clips": [ { "service": "test.clip", "length": 20, "properties": { "mark": 2 } } ] }
                       ] } ] } ] })"),
              0)
        << loader.error();
    EXPECT_EQ(project.length, 40);
    MVNTractor* top = MVNFactory::getSingleton()->getTractorById(project.tractorId);
    auto* outer = dynamic_cast<MVNGroup*>(clipOf(top, 0, 0));
    ASSERT_NE(outer, nullptr);
    EXPECT_EQ(outer->getIn(), 5);
    EXPECT_EQ(outer->getPlaytime(), 40);
    EXPECT_FALSE(outer->getGeometry().isEmpty());
    MVNProducer* below = clipOf(outer->producer(), 0, 0);
    ASSERT_NE(below, nullptr);
    EXPECT_EQ(below->getInt32("mark", 0), 1);
    EXPECT_EQ(below->getInt32("zOrder", 0), 1) << "tracks count from 1 inside a group too";
    auto* inner = dynamic_cast<MVNGroup*>(clipOf(outer->producer(), 1, 1));
    ASSERT_NE(inner, nullptr);
    EXPECT_EQ(inner->getInt32("zOrder", 0), 2);
    MVNProducer* deepest = clipOf(inner->producer(), 0, 0);
    ASSERT_NE(deepest, nullptr);
    EXPECT_EQ(deepest->getInt32("mark", 0), 2);
}

TEST_F(ProjectLoader, ATransitionOverlapsItsClipsAndShortensTheTrack) {
    ASSERT_EQ(loadClips(R"({ "service": "test.clip", "length": 50 },
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

struct BadProject {
    const char* name;
    std::string json;
    const char* where;           // the message after "show.json: "
    const char* file = nullptr;  // ends the message, under the project's folder
};
std::ostream& operator<<(std::ostream& os, const BadProject& b) { return os << b.name; }

class ProjectLoaderErrors : public ProjectLoader, public ::testing::WithParamInterface<BadProject> {};

TEST_P(ProjectLoaderErrors, NameTheJsonPathAndTheReason) {
    EXPECT_EQ(load(GetParam().json), -1);
    std::string file = GetParam().file ? (folder / GetParam().file).string() : std::string();
    EXPECT_EQ(loader.error(), (folder / "show.json").string() + ": " + GetParam().where + file);
    EXPECT_EQ(MVNFactory::getSingleton()->count(), baseline);
}

#define CLIP_TRACKS(clips) "{ \"profile\": \"hd_720_25p\", \"tracks\": [ { \"clips\": [ " clips " ] } ] }"
#define GRID(props) "{ \"service\": \"ogre.grid\", \"length\": 5, \"properties\": { " props " } }"
#define CLIP(n) "{ \"service\": \"test.clip\", \"length\": " #n " }"

INSTANTIATE_TEST_SUITE_P(
    Cases, ProjectLoaderErrors,
    ::testing::Values(
        BadProject{"NoTracks", R"({ "profile": "hd_720_25p" })", "tracks: missing"},
        BadProject{"EmptyTracks", R"({ "profile": "hd_720_25p", "tracks": [] })", "tracks: no track to render"},
        BadProject{"UnknownProfile", R"({ "profile": "hd_721_25p", "tracks": [] })",
                   "profile: unknown profile \"hd_721_25p\""},
        BadProject{"OddProfile", R"({ "profile": { "width": 321, "height": 180, "fps": 25 }, "tracks": [] })",
                   "profile: width and height must be even"},
        BadProject{"UnknownTopKey", R"({ "profile": "hd_720_25p", "trakcs": [] })", "trakcs: unknown key"},
        BadProject{"MissingService", CLIP_TRACKS(R"({ "length": 5 })"), "tracks[0].clips[0].service: missing"},
        BadProject{"UnknownService", CLIP_TRACKS(R"({ "service": "ogre.colour", "length": 5 })"),
                   "tracks[0].clips[0].service: unknown service \"ogre.colour\""},
        BadProject{"FilterAsClip", CLIP_TRACKS(R"({ "service": "test.filter", "length": 5 })"),
                   "tracks[0].clips[0].service: \"test.filter\" is a filter, not a clip"},
        BadProject{"ZeroLength", CLIP_TRACKS(R"({ "service": "test.clip", "length": 0 })"),
                   "tracks[0].clips[0].length: must be at least 1, got 0"},
        BadProject{"BadGeometry", CLIP_TRACKS(R"({ "service": "test.clip", "length": 5, "geometry": "0:0 10x10" })"),
                   "tracks[0].clips[0].geometry: expected \"[x:y wxh]\", got \"0:0 10x10\""},
        // nan and inf scan as numbers but place nothing.
        BadProject{"NanGeometry",
                   CLIP_TRACKS(R"({ "service": "test.clip", "length": 5, "geometry": "[nan:nan 10x10]" })"),
                   "tracks[0].clips[0].geometry: expected \"[x:y wxh]\", got \"[nan:nan 10x10]\""},
        BadProject{"InfiniteGeometry",
                   CLIP_TRACKS(R"({ "service": "test.clip", "length": 5, "geometry": "[0:0 infxinf]" })"),
                   "tracks[0].clips[0].geometry: expected \"[x:y wxh]\", got \"[0:0 infxinf]\""},
        BadProject{"HugeProfile",
                   R"({ "profile": { "width": 100000, "height": 100000, "fps": 25 }, "tracks": [] })",
                   "profile.width: too large: 100000 (at most 16384)"},
        BadProject{"VanishingRate", R"({ "profile": { "width": 320, "height": 180, "fps": 1e-300 }, "tracks": [] })",
                   "profile.fps: too small: at least 0.001 frames a second"},
        BadProject{"BlankWithMore", CLIP_TRACKS(R"({ "blank": 5, "length": 3 })"),
                   "tracks[0].clips[0]: a blank takes no other key"},
        BadProject{"PropertyObject", CLIP_TRACKS(R"({ "service": "test.clip", "length": 5, "properties": { "a": [1] } })"),
                   "tracks[0].clips[0].properties.a: expected a string, a number or a boolean, got array"},
        BadProject{"FilterUnknown",
                   CLIP_TRACKS(R"({ "service": "test.clip", "length": 5, "filters": [ { "service": "nope" } ] })"),
                   "tracks[0].clips[0].filters[0].service: unknown service \"nope\""},
        BadProject{"TwoPassWithoutSecond",
                   CLIP_TRACKS(R"({ "service": "test.clip", "length": 5, "filters": [
                       { "service": "ogre.filter.sample2", "resource": "GaussianBlurX" } ] })"),
                   "tracks[0].clips[0].filters[0].properties.resource_two: missing: the material of the second pass"},
        BadProject{"TwoPassWithoutFirst",
                   CLIP_TRACKS(R"({ "service": "test.clip", "length": 5, "filters": [
                       { "service": "ogre.filter.sample2", "properties": { "resource_two": "GaussianBlurY" } } ] })"),
                   "tracks[0].clips[0].filters[0].resource: missing"},
        BadProject{"CanvasType",
                   CLIP_TRACKS(R"({ "service": "test.clip", "length": 5, "filters": [
                       { "service": "ogre.filter.canvas", "properties": { "canvasType": 3 } } ] })"),
                   "tracks[0].clips[0].filters[0].properties.canvasType: expected 0 (blurred picture), 1 (blurred "
                   "file) or 2 (colour)"},
        BadProject{"CanvasColour",
                   CLIP_TRACKS(R"({ "service": "test.clip", "length": 5, "filters": [
                       { "service": "ogre.filter.canvas", "properties": { "canvasType": 2, "color": "red" } } ] })"),
                   "tracks[0].clips[0].filters[0].properties.color: expected a colour \"#rrggbbaa\""},
        BadProject{"CanvasWithoutFile",
                   CLIP_TRACKS(R"({ "service": "test.clip", "length": 5, "filters": [
                       { "service": "ogre.filter.canvas", "properties": { "canvasType": 1 } } ] })"),
                   "tracks[0].clips[0].filters[0].properties.resource: missing: the picture file of the background"},
        // Groups: paths run through nested tracks.
        BadProject{"GroupWithoutTracks", CLIP_TRACKS(R"({ "service": "ogre.group.sample", "length": 5 })"),
                   "tracks[0].clips[0].tracks: missing: a group composes its own tracks"},
        BadProject{"GroupTracksNotAList", CLIP_TRACKS(R"({ "service": "ogre.group.sample", "length": 5, "tracks": {} })"),
                   "tracks[0].clips[0].tracks: expected a list, got object"},
        BadProject{"ErrorInsideANestedGroup",
                   CLIP_TRACKS(R"({ "service": "ogre.group.sample", "length": 5, "tracks": [ { "clips": [] },
                       { "clips": [ { "service": "ogre.group.sample", "length": 5, "tracks": [
                         { "clips": [ { "service": "test.clip" } ] } ] } ] } ] })"),
                   "tracks[0].clips[0].tracks[1].clips[0].tracks[0].clips[0].length: missing"},
        BadProject{"GroupWithResource",
                   CLIP_TRACKS(R"({ "service": "ogre.group.sample", "length": 5, "resource": "pictures/beach.png",
                       "tracks": [ { "clips": [] } ] })"),
                   "tracks[0].clips[0].resource: a group takes no resource"},
        BadProject{"TracksOnAClip", CLIP_TRACKS(R"({ "service": "test.clip", "length": 5, "tracks": [] })"),
                   "tracks[0].clips[0].tracks: only a group (\"ogre.group.sample\") takes tracks"},
        // Grids: rows, columns and cells are properties.
        BadProject{"GridWithoutRow", CLIP_TRACKS(GRID(R"("column": 2)")), "tracks[0].clips[0].properties.row: missing"},
        BadProject{"GridOfNoColumn", CLIP_TRACKS(GRID(R"("row": 2, "column": 0)")),
                   "tracks[0].clips[0].properties.column: expected an integer from 1 to 1000"},
        BadProject{"GridRowAsText", CLIP_TRACKS(GRID(R"("row": "2", "column": 2)")),
                   "tracks[0].clips[0].properties.row: expected an integer from 1 to 1000"},
        BadProject{"CellKeyOfAnotherEnding", CLIP_TRACKS(GRID(R"("row": 2, "column": 2, "clip.0.0.image": "#ff0000ff")")),
                   "tracks[0].clips[0].properties.clip.0.0.image: expected a cell key \"clip.<row>.<column>.resource\""},
        BadProject{"CellKeyWithLeadingZero",
                   CLIP_TRACKS(GRID(R"("row": 2, "column": 2, "clip.01.0.resource": "#ff0000ff")")),
                   "tracks[0].clips[0].properties.clip.01.0.resource: expected a cell key "
                   "\"clip.<row>.<column>.resource\""},
        BadProject{"CellOutsideTheGrid", CLIP_TRACKS(GRID(R"("row": 2, "column": 2, "clip.0.2.resource": "#ff0000ff")")),
                   "tracks[0].clips[0].properties.clip.0.2.resource: cell outside the grid of 2x2"},
        BadProject{"CellOfANumber", CLIP_TRACKS(GRID(R"("row": 1, "column": 1, "clip.0.0.resource": 5)")),
                   "tracks[0].clips[0].properties.clip.0.0.resource: expected a file or a colour"},
        BadProject{"CellOfAnUnknownKind", CLIP_TRACKS(GRID(R"("row": 1, "column": 1, "clip.0.0.resource": "clip.wmv")")),
                   "tracks[0].clips[0].properties.clip.0.0.resource: a cell shows a colour \"#rrggbb\" or a file of "
                   ".jpg, .jpeg, .png, .bmp, .webp, .mp4, .mov, .flv, .gif, not \"clip.wmv\""},
        BadProject{"GridWithResource",
                   CLIP_TRACKS(R"({ "service": "ogre.grid", "length": 5, "resource": "pictures/beach.png",
                       "properties": { "row": 1, "column": 1 } })"),
                   "tracks[0].clips[0].resource: a grid takes its cells as properties"},
        // Transitions: they overlap the clips on both sides.
        BadProject{"TransitionAtTheStart", CLIP_TRACKS(R"({ "transition": "fade", "length": 5 }, )" CLIP(20)),
                   "tracks[0].clips[0]: a transition needs a clip before it; this one starts the track"},
        BadProject{"TransitionAtTheEnd", CLIP_TRACKS(CLIP(20) R"(, { "transition": "fade", "length": 5 })"),
                   "tracks[0].clips[1]: a transition needs a clip after it; this one ends the track"},
        BadProject{"TransitionNextToABlank",
                   CLIP_TRACKS(CLIP(20) R"(, { "transition": "fade", "length": 5 }, { "blank": 10 })"),
                   "tracks[0].clips[1]: a transition needs a clip after it, not a blank or a transition"},
        BadProject{"TransitionLongerThanTheClipBefore",
                   CLIP_TRACKS(CLIP(8) R"(, { "transition": "fade", "length": 10 }, )" CLIP(20)),
                   "tracks[0].clips[1].length: 10 frames are longer than the clip before (tracks[0].clips[0], 8 "
                   "frames)"},
        BadProject{"TransitionLongerThanTheClipAfter",
                   CLIP_TRACKS(CLIP(20) R"(, { "transition": "fade", "length": 10 }, )" CLIP(9)),
                   "tracks[0].clips[1].length: 10 frames are longer than the clip after (tracks[0].clips[2], 9 "
                   "frames)"},
        BadProject{"TransitionsOnBothSidesTakeTooMuch",
                   CLIP_TRACKS(CLIP(20) R"(, { "transition": "fade", "length": 10 }, )" CLIP(15) R"(, { "transition": "fade", "length": 10 }, )" CLIP(20)),
                   "tracks[0].clips[3].length: the transitions on both sides of tracks[0].clips[2] take 20 of its 15 "
                   "frames"},
        BadProject{"TransitionUnknownName", CLIP_TRACKS(CLIP(20) R"(, { "transition": "fadee", "length": 5 }, )" CLIP(20)),
                   "tracks[0].clips[1].transition: unknown transition \"fadee\""},
        BadProject{"TransitionMissingFile",
                   CLIP_TRACKS(CLIP(20) R"(, { "transition": "looks/twirl.glsl", "length": 5 }, )" CLIP(20)),
                   "tracks[0].clips[1].transition: file not found: ", "looks/twirl.glsl"},
        BadProject{"TransitionUnknownKey", CLIP_TRACKS(CLIP(20) R"(, { "transition": "fade", "lenght": 5 }, )" CLIP(20)),
                   "tracks[0].clips[1].lenght: unknown key"},
        BadProject{"FileAsAProperty",
                   CLIP_TRACKS(R"({ "service": "test.clip", "length": 5, "resource": "pictures/beach.png",
                                   "properties": { "resource": "elsewhere.png" } })"),
                   "tracks[0].clips[0].properties.resource: a clip names its file with its own \"resource\" key"},
        // Whatever a file's keys and names hold, a refusal stays one line.
        BadProject{"KeyWithNewlinesIsEscaped",
                   R"({ "profile": "hd_720_25p", "tracks": [ { "a\nb\r\tc": [] } ] })",
                   "tracks[0].a\\nb\\r\\tc: unknown key"},
        BadProject{"ServiceWithControlCharactersIsEscaped", CLIP_TRACKS(R"({ "service": "ogre.\u0001\u007f", "length": 5 })"),
                   "tracks[0].clips[0].service: unknown service \"ogre.\\x01\\x7f\""}),
    [](const ::testing::TestParamInfo<BadProject>& info) { return std::string(info.param.name); });

TEST_F(ProjectLoader, ACellFileIsLookedForBesideTheProject) {
    EXPECT_EQ(loadClips(GRID(R"("row": 1, "column": 2, "clip.0.0.resource": "pictures/beach.png",
                           "clip.0.1.resource": "pictures/sea.png")")),
              -1);
    EXPECT_EQ(loader.error(), (folder / "show.json").string() +
                                  ": tracks[0].clips[0].properties.clip.0.1.resource: file not found: " +
                                  (folder / "pictures" / "sea.png").string());
}

TEST_F(ProjectLoader, AMissingPictureIsNamedWithItsAbsolutePath) {
    EXPECT_EQ(load(CLIP_TRACKS(R"({ "service": "test.clip", "length": 5 }, { "service": "test.clip", "length": 5,
                                    "resource": "pictures/sea.png" })")),
              -1);
    EXPECT_EQ(loader.error(), (folder / "show.json").string() +
                                  ": tracks[0].clips[1].resource: file not found: " +
                                  (folder / "pictures" / "sea.png").string());
}

TEST_F(ProjectLoader, InvalidJsonAndMissingFileAreNamed) {
    // Syntax, a number no double holds, a string that is not UTF-8: each an
    // error, never an exception out of the loader.
    for (const char* text : {"{ \"profile\": ", "{ \"profile\": \"hd_720_25p\", \"tracks\": 1e400 }",
                             "{ \"profile\": \"\xff\xfe\" }"}) {
        EXPECT_EQ(load(text), -1);
        EXPECT_EQ(loader.error().rfind((folder / "show.json").string() + ": not valid JSON: ", 0), 0u)
            << loader.error();
    }
    EXPECT_EQ(loader.load((folder / "absent.json").string(), project), -1);
    EXPECT_EQ(loader.error(), (folder / "absent.json").string() + ": cannot open the project file");
}

}  // namespace
