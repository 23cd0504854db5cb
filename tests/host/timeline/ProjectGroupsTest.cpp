// Groups and grids in project files: a group's tracks become a timeline of
// their own connected to the group, groups nest, and every error names its
// JSON path, nested paths included.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "FakeServices.h"
#include "timeline/MVNFactory.h"
#include "services/MVNGroup.h"
#include "timeline/MVNPlaylist.h"
#include "timeline/MVNProjectLoader.h"
#include "timeline/MVNRepository.h"
#include "timeline/MVNTractor.h"

using namespace Morvane;
using namespace MorvaneTest;
namespace fs = std::filesystem;

namespace {

// A group that only remembers what it was connected to.
class FakeGroup : public MVNGroup {
public:
    explicit FakeGroup(const MVNProfile& profile) : MVNGroup(profile) {}
};

class ProjectGroups : public ::testing::Test {
protected:
    void SetUp() override {
        MVNRepository* repo = MVNRepository::getSingleton();
        auto clip = [](const MVNProfile* p, const MVNProperties*) -> MVNService* { return new FakeProducer(*p); };
        auto group = [](const MVNProfile* p, const MVNProperties*) -> MVNService* { return new FakeGroup(*p); };
        repo->registerService(MVN_SERVICE_PRODUCER, "test.clip", clip);
        repo->registerService(MVN_SERVICE_PRODUCER, "ogre.group.sample", group);
        repo->registerService(MVN_SERVICE_PRODUCER, "ogre.grid", group);
        folder = fs::current_path() / "project";
        fs::create_directories(folder / "pictures");
        std::ofstream(folder / "pictures" / "beach.png") << "not really a picture";
        baseline = MVNFactory::getSingleton()->count();
    }
    void TearDown() override {
        MVNProjectLoader::unload(project);
        EXPECT_EQ(MVNFactory::getSingleton()->count(), baseline) << "the loader left services behind";
        for (const char* name : {"test.clip", "ogre.group.sample", "ogre.grid"})
            MVNRepository::getSingleton()->unregisterService(name);
    }
    int load(const std::string& clips) {
        return loader.loadFromString(R"({ "profile": "hd_720_25p", "tracks": [ { "clips": [ )" + clips + " ] } ] }",
                                     (folder / "show.json").string(), project);
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

TEST_F(ProjectGroups, AGroupHoldsItsTracksAndGroupsNest) {
    ASSERT_EQ(load(R"({ "service": "ogre.group.sample", "length": 40, "in": 5, "geometry": "[0:0 640x360]",
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

struct BadPart {
    const char* name;
    const char* clips;
    const char* where;  // the message after "show.json: "
};

class ProjectGroupErrors : public ProjectGroups, public ::testing::WithParamInterface<BadPart> {};

TEST_P(ProjectGroupErrors, NameTheJsonPathAndTheReason) {
    EXPECT_EQ(load(GetParam().clips), -1);
    EXPECT_EQ(loader.error(), (folder / "show.json").string() + ": " + GetParam().where);
    EXPECT_EQ(MVNFactory::getSingleton()->count(), baseline);
}

#define GRID(props) "{ \"service\": \"ogre.grid\", \"length\": 5, \"properties\": { " props " } }"

INSTANTIATE_TEST_SUITE_P(
    Cases, ProjectGroupErrors,
    ::testing::Values(
        BadPart{"GroupWithoutTracks", R"({ "service": "ogre.group.sample", "length": 5 })",
                "tracks[0].clips[0].tracks: missing: a group composes its own tracks"},
        BadPart{"GroupWithNoTrack", R"({ "service": "ogre.group.sample", "length": 5, "tracks": [] })",
                "tracks[0].clips[0].tracks: no track to render"},
        BadPart{"GroupTracksNotAList", R"({ "service": "ogre.group.sample", "length": 5, "tracks": {} })",
                "tracks[0].clips[0].tracks: expected a list, got object"},
        BadPart{"ErrorInsideANestedGroup",
                R"({ "service": "ogre.group.sample", "length": 5, "tracks": [ { "clips": [] },
                     { "clips": [ { "service": "ogre.group.sample", "length": 5, "tracks": [
                       { "clips": [ { "service": "test.clip" } ] } ] } ] } ] })",
                "tracks[0].clips[0].tracks[1].clips[0].tracks[0].clips[0].length: missing"},
        BadPart{"GroupWithResource",
                R"({ "service": "ogre.group.sample", "length": 5, "resource": "pictures/beach.png",
                     "tracks": [ { "clips": [] } ] })",
                "tracks[0].clips[0].resource: a group takes no resource"},
        BadPart{"TracksOnAClip", R"({ "service": "test.clip", "length": 5, "tracks": [] })",
                "tracks[0].clips[0].tracks: only a group (\"ogre.group.sample\") takes tracks"},
        BadPart{"GridWithoutRow", GRID(R"("column": 2)"), "tracks[0].clips[0].properties.row: missing"},
        BadPart{"GridWithoutColumn", GRID(R"("row": 2)"), "tracks[0].clips[0].properties.column: missing"},
        BadPart{"GridOfNoColumn", GRID(R"("row": 2, "column": 0)"),
                "tracks[0].clips[0].properties.column: expected an integer from 1 to 1000"},
        BadPart{"GridRowAsText", GRID(R"("row": "2", "column": 2)"),
                "tracks[0].clips[0].properties.row: expected an integer from 1 to 1000"},
        BadPart{"CellKeyOfAnotherEnding", GRID(R"("row": 2, "column": 2, "clip.0.0.image": "#ff0000ff")"),
                "tracks[0].clips[0].properties.clip.0.0.image: expected a cell key \"clip.<row>.<column>.resource\""},
        BadPart{"CellKeyWithLeadingZero", GRID(R"("row": 2, "column": 2, "clip.01.0.resource": "#ff0000ff")"),
                "tracks[0].clips[0].properties.clip.01.0.resource: expected a cell key "
                "\"clip.<row>.<column>.resource\""},
        BadPart{"CellKeyWithoutNumbers", GRID(R"("row": 2, "column": 2, "clip.a.b.resource": "#ff0000ff")"),
                "tracks[0].clips[0].properties.clip.a.b.resource: expected a cell key "
                "\"clip.<row>.<column>.resource\""},
        BadPart{"CellOutsideTheGrid", GRID(R"("row": 2, "column": 2, "clip.0.2.resource": "#ff0000ff")"),
                "tracks[0].clips[0].properties.clip.0.2.resource: cell outside the grid of 2x2"},
        BadPart{"CellOfANumber", GRID(R"("row": 1, "column": 1, "clip.0.0.resource": 5)"),
                "tracks[0].clips[0].properties.clip.0.0.resource: expected a file or a colour"},
        BadPart{"CellOfAnUnknownKind",
                GRID(R"("row": 1, "column": 1, "clip.0.0.resource": "clip.wmv")"),
                "tracks[0].clips[0].properties.clip.0.0.resource: a cell shows a colour \"#rrggbb\" or a file of "
                ".jpg, .jpeg, .png, .bmp, .webp, .mp4, .mov, .flv, .gif, not \"clip.wmv\""},
        BadPart{"GridWithResource",
                R"({ "service": "ogre.grid", "length": 5, "resource": "pictures/beach.png",
                     "properties": { "row": 1, "column": 1 } })",
                "tracks[0].clips[0].resource: a grid takes its cells as properties"}),
    [](const ::testing::TestParamInfo<BadPart>& info) { return std::string(info.param.name); });

TEST_F(ProjectGroups, ACellFileIsLookedForBesideTheProject) {
    EXPECT_EQ(load(GRID(R"("row": 1, "column": 2, "clip.0.0.resource": "pictures/beach.png",
                           "clip.0.1.resource": "pictures/sea.png")")),
              -1);
    EXPECT_EQ(loader.error(), (folder / "show.json").string() +
                                  ": tracks[0].clips[0].properties.clip.0.1.resource: file not found: " +
                                  (folder / "pictures" / "sea.png").string());
}

}  // namespace
