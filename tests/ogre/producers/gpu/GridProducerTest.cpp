// Grids: each cell's clip fitted and centred in its cell, a cell replaced
// while the grid runs, the error picture where a cell names nothing, and
// the grid's refusals in its log.
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>

#include "LogCapture.h"
#include "ProjectSceneTest.h"
#include "core/MVNImage.h"
#include "producers/MVNGrid.h"
#include "services/MVNTransitionAudio.h"
#include "timeline/MVNPlaylist.h"
#include "MVNTestPaths.h"

using namespace Morvane;
using namespace MorvaneTest;

namespace {

constexpr RGBA kYellow{255, 255, 0, 255};
constexpr RGBA kWhite{255, 255, 255, 255};
const char* const kGridTag = "Morvane::MVNGrid";

class GridProducer : public ProjectSceneTest {
protected:
    void TearDown() override {
        for (const std::string& id : ids_) MVNFactory::getSingleton()->destroyService(id);
        ProjectSceneTest::TearDown();
    }

    // The grid of the project's track 0.
    MVNGrid* projectGrid() {
        MVNTractor* tractor = MVNFactory::getSingleton()->getTractorById(project.tractorId);
        auto* playlist = tractor ? dynamic_cast<MVNPlaylist*>(tractor->getTrack(0)) : nullptr;
        return playlist ? dynamic_cast<MVNGrid*>(playlist->getClip(0)) : nullptr;
    }

    // A grid built by the factory alone, null when refused.
    MVNGrid* make(MVNProperties props) {
        props.setString("service", "ogre.grid");
        std::string id = MVNFactory::getSingleton()->createProducer(profile(), props);
        if (id.empty()) return nullptr;
        ids_.push_back(id);
        return dynamic_cast<MVNGrid*>(MVNFactory::getSingleton()->getProducerById(id));
    }

    static void show(MVNProducer* producer, int position) {
        MVNFrame* frame = nullptr;
        if (producer->getImage(position, &frame) == 0) MVNFrame::pushBackPool(frame);
    }

    // The clip that cell `index` shows now, null for an empty cell.
    static MVNProducer* cell(MVNGrid* grid, int index) {
        auto* tractor = dynamic_cast<MVNTractor*>(grid->producer());
        auto* playlist = tractor ? dynamic_cast<MVNPlaylist*>(tractor->getTrack(index)) : nullptr;
        return playlist ? playlist->getClip(0) : nullptr;
    }

    std::vector<std::string> ids_;
};

const char* const kColourGrid = R"([
  { "clips": [ { "service": "ogre.grid", "length": 10, "properties": { "row": 2, "column": 2,
      "clip.0.0.resource": "#ff0000ff", "clip.0.1.resource": "#00ff00ff",
      "clip.1.0.resource": "#0000ffff", "clip.1.1.resource": "#ffff00ff" } } ] } ])";

TEST_F(GridProducer, TwoByTwoColoursEachFillTheirCellAndGoWithTheGrid) {
    ASSERT_EQ(load(kColourGrid), 0) << loader.error();
    draw(4);
    RenderImage out(W, H);
    ASSERT_TRUE(out.ok());
    out.picture().save("grid_colours.png");
    EXPECT_EQ(wrongIn(out, 0, 0, 160, 90, kRed), 0);
    EXPECT_EQ(wrongIn(out, 160, 0, 160, 90, kGreen), 0);
    EXPECT_EQ(wrongIn(out, 0, 90, 160, 90, kBlue), 0);
    EXPECT_EQ(wrongIn(out, 160, 90, 160, 90, kYellow), 0);
    MVNGrid* grid = projectGrid();
    ASSERT_NE(grid, nullptr);
    for (int i = 0; i < 4; ++i) {
        ASSERT_NE(cell(grid, i), nullptr);
        EXPECT_EQ(cell(grid, i)->getInt32("zOrder", -1), i) << "later cells lie above";
    }
    // The sound of cell 0 is mixed with each other cell's.
    auto* tractor = dynamic_cast<MVNTractor*>(grid->producer());
    ASSERT_NE(tractor, nullptr);
    std::vector<std::pair<int, int>> mixed;
    for (MVNTransitionAudio* t : tractor->transitionAudios()) mixed.emplace_back(t->trackA(), t->trackB());
    EXPECT_EQ(mixed, (std::vector<std::pair<int, int>>{{0, 1}, {0, 2}, {0, 3}}));
    // Unloading the project destroys every cell with the grid.
    std::vector<std::string> cells;
    for (int i = 0; i < 4; ++i) cells.push_back(cell(grid, i)->getStringId());
    MVNProjectLoader::unload(project);
    for (const std::string& id : cells) EXPECT_EQ(MVNFactory::getSingleton()->getProducerById(id), nullptr) << id;
}

TEST_F(GridProducer, CellsOfAnotherAspectAreFittedAndCentred) {
    // Three columns of 106 x 90: a 16:9 clip fills the width, 59.6 rows
    // high, and sits 15 rows below the top of its cell.
    MVNProperties props;
    props.setInt32("row", 2);
    props.setInt32("column", 3);
    for (int r = 0; r < 2; ++r)
        for (int c = 0; c < 3; ++c)
            props.setString(("clip." + std::to_string(r) + "." + std::to_string(c) + ".resource").c_str(),
                            "#00ff00ff");
    MVNGrid* grid = make(props);
    ASSERT_NE(grid, nullptr);
    show(grid, 0);
    RenderImage out(W, H);
    ASSERT_TRUE(out.ok());
    out.picture().save("grid_fitted.png");
    MVNRect placed = cell(grid, 5)->getGeometry();  // row 1, column 2; bottom-left origin
    EXPECT_FLOAT_EQ(placed.x, 212.0f);
    EXPECT_FLOAT_EQ(placed.width, 106.0f);
    EXPECT_NEAR(placed.height, 106.0f * 9 / 16, 0.01);
    EXPECT_NEAR(placed.y, 180.0f - 105.0f - placed.height, 0.01);
    for (int r = 0; r < 2; ++r) {
        int top = 90 * r;
        EXPECT_EQ(wrongIn(out, 0, top + 15, 318, 60, kGreen), 0) << "row " << r;
        EXPECT_EQ(wrongIn(out, 0, top, 318, 15, kMagenta, 1), 0) << "above row " << r;
        EXPECT_EQ(wrongIn(out, 0, top + 75, 318, 15, kMagenta, 1), 0) << "below row " << r;
    }
}

TEST_F(GridProducer, APictureKeepsItsAspectInItsCell) {
    // 32 x 16 into a cell of the whole 320 x 180 picture: 320 x 160, ten
    // rows free above and below.
    const std::string file = std::string(MVN_TEST_DATA_DIR) + "/host/blue-32x16.jpg";
    MVNFrame* reference = MVNImage::loadFromFile(file, 0, 0);
    ASSERT_NE(reference, nullptr);
    const uint8_t* middle = reference->buffer()->ptr() + (8 * 32 + 16) * 4;  // B,G,R,A
    const RGBA picture{middle[2], middle[1], middle[0], 255};
    MVNFrame::pushBackPool(reference);
    MVNProperties props;
    props.setInt32("row", 1);
    props.setInt32("column", 1);
    props.setString("clip.0.0.resource", file);
    MVNGrid* grid = make(props);
    ASSERT_NE(grid, nullptr);
    show(grid, 0);
    RenderImage out(W, H);
    ASSERT_TRUE(out.ok());
    EXPECT_EQ(wrongIn(out, 0, 0, 320, 10, kMagenta, 1), 0);
    EXPECT_EQ(wrongIn(out, 0, 170, 320, 10, kMagenta, 1), 0);
    // One colour all over, as the file decodes on the processor.
    for (auto [x, y] : {std::pair{3, 13}, {160, 90}, {316, 166}}) {
        EXPECT_LE(maxColourDifference(out.at(x, y), picture), 2) << x << "," << y << ": " << out.at(x, y);
    }
}

TEST_F(GridProducer, ACellIsReplacedWhileTheGridRuns) {
    ASSERT_EQ(load(kColourGrid), 0) << loader.error();
    draw(0);
    MVNGrid* grid = projectGrid();
    ASSERT_NE(grid, nullptr);
    std::string before = cell(grid, 3)->getStringId();
    grid->setString("clip.1.1.resource", "#ffffffff");
    EXPECT_EQ(MVNFactory::getSingleton()->getProducerById(before), nullptr) << "the old clip is destroyed";
    draw(1);
    {
        RenderImage out(W, H);
        ASSERT_TRUE(out.ok());
        EXPECT_EQ(wrongIn(out, 160, 90, 160, 90, kWhite), 0);
        EXPECT_EQ(wrongIn(out, 0, 0, 160, 90, kRed), 0);
        EXPECT_EQ(wrongIn(out, 160, 0, 160, 90, kGreen), 0);
        EXPECT_EQ(wrongIn(out, 0, 90, 160, 90, kBlue), 0);
    }
    // The same resource again, or a key of another ending: nothing changes.
    std::string now = cell(grid, 3)->getStringId();
    LogCapture log;
    grid->setString("clip.1.1.resource", "#ffffffff");
    grid->setString("clip.1.1.width", "#000000ff");
    grid->setString("clip.1.1.resource", "");
    EXPECT_EQ(log.count(MVNLogLevel::Debug, kGridTag, "resource sample, not process"), 1);
    EXPECT_EQ(log.count(MVNLogLevel::Warn, kGridTag, "not process empty resource"), 1);
    EXPECT_EQ(cell(grid, 3)->getStringId(), now);
}

TEST_F(GridProducer, ACellWithoutResourceShowsTheErrorPicture) {
    ASSERT_EQ(load(R"([
      { "clips": [ { "service": "ogre.grid", "length": 10, "properties": { "row": 2, "column": 2,
          "clip.0.0.resource": "#ff0000ff", "clip.0.1.resource": "#00ff00ff",
          "clip.1.0.resource": "#0000ffff" } } ] } ])"),
              0)
        << loader.error();
    draw(0);
    RenderImage out(W, H);
    ASSERT_TRUE(out.ok());
    out.picture().save("grid_error.png");
    // The picture is dark grey with a red cross: its middle is red, the
    // middle of its top edge grey (a JPEG: within 12 of the painted values).
    auto near = [](RGBA got, RGBA want) { return maxColourDifference(got, want) <= 12; };
    EXPECT_PRED2(near, out.at(240, 135), (RGBA{215, 30, 30, 255}));
    EXPECT_PRED2(near, out.at(240, 96), (RGBA{40, 40, 40, 255}));
    EXPECT_PRED2(near, out.at(300, 135), (RGBA{40, 40, 40, 255}));
    EXPECT_EQ(wrongIn(out, 0, 90, 160, 90, kBlue), 0);
}

TEST_F(GridProducer, RefusalsAreLoggedAndABadCellStaysEmpty) {
    {
        LogCapture log;
        MVNProperties props;
        props.setInt32("row", 0);
        props.setInt32("column", 2);
        EXPECT_EQ(make(props), nullptr);
        EXPECT_TRUE(log.has(MVNLogLevel::Error, kGridTag, "error row:0,column:2"));
    }
    std::ofstream("notes.txt") << "not a clip";
    LogCapture log;
    MVNProperties props;
    props.setInt32("row", 1);
    props.setInt32("column", 2);
    props.setString("clip.0.0.resource", "notes.txt");
    props.setString("clip.0.1.resource", "#00ff00ff");
    MVNGrid* grid = make(props);
    ASSERT_NE(grid, nullptr);
    EXPECT_TRUE(log.has(MVNLogLevel::Error, kGridTag, "error format notes.txt"));
    EXPECT_TRUE(log.has(MVNLogLevel::Error, kGridTag, "create cell [0,0] failed"));
    EXPECT_EQ(cell(grid, 0), nullptr);
    show(grid, 0);
    RenderImage out(W, H);
    ASSERT_TRUE(out.ok());
    EXPECT_EQ(wrongIn(out, 0, 0, 160, 180, kMagenta), 0) << "the empty cell shows what lies below";
    EXPECT_EQ(wrongIn(out, 160, 45, 160, 90, kGreen), 0);
}

TEST_F(GridProducer, AProjectNamesTheCellTheGridCouldNotMake) {
    // A video cell that no video service opens.
    std::ofstream("clip.mp4") << "not a video";
    EXPECT_EQ(load(R"([ { "clips": [ { "service": "ogre.grid", "length": 10, "properties": { "row": 1, "column": 1,
          "clip.0.0.resource": "clip.mp4" } } ] } ])"),
              -1);
    EXPECT_EQ(loader.error(), (std::filesystem::current_path() / "show.json").string() +
                                  ": tracks[0].clips[0].properties.clip.0.0.resource: the grid could not make this "
                                  "cell (see the log)");
}

}  // namespace
