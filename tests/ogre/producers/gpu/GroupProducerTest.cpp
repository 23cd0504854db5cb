// Groups built from project files: a group's tracks compose inside it, the
// group's picture lands where its geometry says, a filter of the group works
// on that picture as a whole, and groups nest.
#include <gtest/gtest.h>

#include "LogCapture.h"
#include "ProjectSceneTest.h"
#include <OgreRoot.h>

#include "producers/MVNGroupSample.h"
#include "services/MVNFilter.h"
#include "services/MVNTransition.h"
#include "timeline/MVNManager.h"
#include "timeline/MVNPlaylist.h"

using namespace Morvane;
using namespace MorvaneTest;

namespace {

constexpr RGBA kYellow{255, 255, 0, 255};

class GroupProducer : public ProjectSceneTest {
protected:
    // The group of the project's track `track`, clip 0.
    MVNGroupSample* group(int track) {
        MVNTractor* tractor = MVNFactory::getSingleton()->getTractorById(project.tractorId);
        auto* playlist = tractor ? dynamic_cast<MVNPlaylist*>(tractor->getTrack(track)) : nullptr;
        return playlist ? dynamic_cast<MVNGroupSample*>(playlist->getClip(0)) : nullptr;
    }
};

// Blue below; in the top-right quarter a group whose own picture is red with
// a green top-left quarter: scaled by half, the green lands on [160:0 80x45].
const char* const kTwoTrackGroup = R"([
  { "clips": [ { "service": "ogre.color", "length": 10, "properties": { "color": "#0000ffff" } } ] },
  { "clips": [ { "service": "ogre.group.sample", "length": 10, "geometry": "[160:0 160x90]", "tracks": [
      { "clips": [ { "service": "ogre.color", "length": 10, "properties": { "color": "#ff0000ff" } } ] },
      { "clips": [ { "service": "ogre.color", "length": 10, "geometry": "[0:0 160x90]",
                     "properties": { "color": "#00ff00ff" } } ] } ] } ] } ])";

TEST_F(GroupProducer, TwoTracksComposeInsideAndTheGroupLandsAtItsGeometry) {
    ASSERT_EQ(load(kTwoTrackGroup), 0) << loader.error();
    draw(3);
    RenderImage out(W, H);
    ASSERT_TRUE(out.ok());
    out.picture().save("group_two_tracks.png");
    EXPECT_EQ(wrongIn(out, 160, 0, 80, 45, kGreen), 0);
    EXPECT_EQ(wrongIn(out, 240, 0, 80, 45, kRed), 0);
    EXPECT_EQ(wrongIn(out, 160, 45, 160, 45, kRed), 0);
    EXPECT_EQ(wrongIn(out, 0, 0, 160, 180, kBlue), 0);
    EXPECT_EQ(wrongIn(out, 160, 90, 160, 90, kBlue), 0);
    ASSERT_NE(group(1), nullptr);
    EXPECT_TRUE(group(1)->hasNode());
}

TEST_F(GroupProducer, AFilterMasksTheGroupsPictureAsAWholeUntilItIsDetached) {
    // The circle is centred on the group's picture, not on either clip: the
    // group's corners show the blue below, its middle keeps both colours.
    ASSERT_EQ(load(R"([
      { "clips": [ { "service": "ogre.color", "length": 10, "properties": { "color": "#0000ffff" } } ] },
      { "clips": [ { "service": "ogre.group.sample", "length": 10, "geometry": "[160:0 160x90]",
          "filters": [ { "service": "ogre.filter.sample", "resource": "MaskCircleFilter",
                         "properties": { "ufmCircleRadius": 0.5, "ufmSmoothDiff": 0.02 } } ],
          "tracks": [
          { "clips": [ { "service": "ogre.color", "length": 10, "properties": { "color": "#ff0000ff" } } ] },
          { "clips": [ { "service": "ogre.color", "length": 10, "geometry": "[0:0 160x90]",
                         "properties": { "color": "#00ff00ff" } } ] } ] } ] } ])"),
              0)
        << loader.error();
    draw(2);
    RenderImage out(W, H);
    ASSERT_TRUE(out.ok());
    out.picture().save("group_filtered.png");
    EXPECT_EQ(out.at(240 - 20, 45 - 10), kGreen) << "inside the circle, the green clip";
    EXPECT_EQ(out.at(240 + 20, 45 + 10), kRed) << "inside the circle, the red clip";
    for (auto [x, y] : {std::pair{162, 2}, {317, 2}, {162, 87}, {317, 87}}) {
        EXPECT_EQ(out.at(x, y), kBlue) << "corner " << x << "," << y << " is masked off";
    }
    EXPECT_EQ(wrongIn(out, 0, 0, 160, 180, kBlue), 0);
    EXPECT_EQ(wrongIn(out, 160, 90, 160, 90, kBlue), 0);
    // The filter draws the picture; the group's own quad is gone.
    MVNGroupSample* g = group(1);
    ASSERT_NE(g, nullptr);
    EXPECT_FALSE(g->hasNode());
    std::vector<std::string> filters;
    g->getVideoFilters(filters);
    ASSERT_EQ(filters.size(), 1u);
    MVNFilter* mask = MVNFactory::getSingleton()->getFilterById(filters[0]);
    EXPECT_EQ(mask->getInt32("_inputType", 0), MVN_INPUT_GROUP_RTT);
    EXPECT_EQ(mask->getString("_inputRtt", ""), g->getOutputRtt());

    // Without its last filter the group's quad comes back, corners included.
    ASSERT_EQ(g->detach(mask), 0);
    EXPECT_TRUE(g->hasNode());
    draw(3);
    RenderImage whole(W, H);
    ASSERT_TRUE(whole.ok());
    EXPECT_EQ(whole.at(162, 2), kGreen);
    EXPECT_EQ(whole.at(317, 87), kRed);
}

TEST_F(GroupProducer, AFilteredClipInsideAGroupDrawsInTheGroup) {
    // The red clip fills the top-left quarter of the group's picture and is
    // masked to a circle there: on screen a circle of radius 22 around
    // (200, 22), nothing at the clip's place in the enclosing picture.
    ASSERT_EQ(load(R"([
      { "clips": [ { "service": "ogre.color", "length": 10, "properties": { "color": "#0000ffff" } } ] },
      { "clips": [ { "service": "ogre.group.sample", "length": 10, "geometry": "[160:0 160x90]", "tracks": [
          { "clips": [ { "service": "ogre.color", "length": 10, "geometry": "[0:0 160x90]",
                         "properties": { "color": "#ff0000ff" },
                         "filters": [ { "service": "ogre.filter.sample", "resource": "MaskCircleFilter",
                                        "properties": { "ufmCircleRadius": 0.5, "ufmSmoothDiff": 0.02 } } ] } ] }
          ] } ] } ])"),
              0)
        << loader.error();
    draw(1);
    RenderImage out(W, H);
    ASSERT_TRUE(out.ok());
    out.picture().save("group_filtered_clip.png");
    EXPECT_EQ(out.at(200, 22), kRed);
    EXPECT_EQ(out.at(161, 1), kBlue) << "the clip's corner is masked off";
    EXPECT_EQ(wrongIn(out, 0, 0, 160, 180, kBlue), 0) << "nothing drawn outside the group";
    EXPECT_EQ(wrongIn(out, 160, 50, 160, 40, kBlue), 0);
}

TEST_F(GroupProducer, FiltersSkipTheFramesARenderSkips) {
    ASSERT_EQ(load(R"([
      { "clips": [ { "service": "ogre.group.sample", "length": 10,
          "filters": [ { "service": "ogre.filter.sample", "resource": "MaskCircleFilter" } ],
          "tracks": [ { "clips": [ { "service": "ogre.color", "length": 10 } ] } ] } ] } ])"),
              0)
        << loader.error();
    MVNGroupSample* g = group(0);
    ASSERT_NE(g, nullptr);
    std::vector<std::string> filters;
    g->getVideoFilters(filters);
    ASSERT_EQ(filters.size(), 1u);
    MVNFilter* mask = MVNFactory::getSingleton()->getFilterById(filters[0]);
    draw(2);
    EXPECT_EQ(mask->getInt32("_frames", -1), 2);
    MVNManager* manager = MVNManager::getSingleton();
    // Put back whatever happens below: the manager outlives the test.
    struct Restore {
        MVNManager* m;
        MVNMode mode;
        int ignore;
        ~Restore() {
            m->setMode(mode);
            m->setIgnoreFrames(ignore);
        }
    } restore{manager, manager->getMode(), manager->getIgnoreFrames()};
    manager->setMode(MVN_MODE_RENDER);
    manager->setIgnoreFrames(3);
    draw(5);
    EXPECT_EQ(mask->getInt32("_frames", -1), 2) << "frames are being skipped: the filter doesn't run";
    manager->setIgnoreFrames(-1);
    draw(6);
    EXPECT_EQ(mask->getInt32("_frames", -1), 6);
}

TEST_F(GroupProducer, ATransitionTakesTheDrawingOverWhileConnected) {
    ASSERT_EQ(load(kTwoTrackGroup), 0) << loader.error();
    MVNGroupSample* g = group(1);
    ASSERT_NE(g, nullptr);
    std::string otherId = MVNFactory::getSingleton()->createProducer(profile(), [] {
        MVNProperties p;
        p.setString("service", "ogre.color");
        return p;
    }());
    ASSERT_FALSE(otherId.empty());
    MVNTransition transition(profile());
    ASSERT_EQ(transition.connect(g, MVNFactory::getSingleton()->getProducerById(otherId)), 0);
    EXPECT_FALSE(g->hasNode());
    transition.disconnect();
    EXPECT_TRUE(g->hasNode());
    MVNFactory::getSingleton()->destroyService(otherId);
    draw(2);
    RenderImage out(W, H);
    ASSERT_TRUE(out.ok());
    EXPECT_EQ(wrongIn(out, 160, 0, 80, 45, kGreen), 0);
    EXPECT_EQ(wrongIn(out, 240, 0, 80, 45, kRed), 0);
}

TEST_F(GroupProducer, TheSceneOutlivesTheGroupUntilTheEngineStops) {
    ASSERT_EQ(load(kTwoTrackGroup), 0) << loader.error();
    draw(0);
    ASSERT_NE(group(1), nullptr);
    std::string scene = group(1)->getGroupName();
    // The group goes first, its clips after it: their quads are still in
    // the scene then.
    MVNProjectLoader::unload(project);
    bool stillThere = false;
    onRenderThread([&]() { stillThere = Ogre::Root::getSingleton().hasSceneManager(scene); });
    EXPECT_TRUE(stillThere);
    RenderImage out(W, H);
    ASSERT_TRUE(out.ok());
    EXPECT_EQ(wrongIn(out, 0, 0, 320, 180, kMagenta), 0) << "nothing of the project is left on screen";
}

TEST_F(GroupProducer, AGroupMovesAboveAnotherWithItsZOrder) {
    ASSERT_EQ(load(R"([
      { "clips": [ { "service": "ogre.group.sample", "length": 10, "geometry": "[80:45 160x90]", "tracks": [
          { "clips": [ { "service": "ogre.color", "length": 10, "properties": { "color": "#ff0000ff" } } ] } ] } ] },
      { "clips": [ { "service": "ogre.group.sample", "length": 10, "geometry": "[120:65 160x90]", "tracks": [
          { "clips": [ { "service": "ogre.color", "length": 10, "properties": { "color": "#00ff00ff" } } ] } ] } ] }
      ])"),
              0)
        << loader.error();
    draw(0);
    {
        RenderImage out(W, H);
        ASSERT_TRUE(out.ok());
        EXPECT_EQ(out.at(200, 100), kGreen) << "the upper track's group above";
    }
    ASSERT_NE(group(0), nullptr);
    group(0)->setInt32("zOrder", 5);
    draw(1);
    RenderImage out(W, H);
    ASSERT_TRUE(out.ok());
    EXPECT_EQ(out.at(200, 100), kRed);
    EXPECT_EQ(wrongIn(out, 80, 45, 160, 90, kRed), 0) << "in its place, whole";
    EXPECT_EQ(out.at(260, 140), kGreen);
}

TEST_F(GroupProducer, AGroupInsideAGroupScalesTwice) {
    // Outer group: bottom-left quarter, red, holding an inner group in its
    // bottom-right quarter; the inner group is yellow with nothing else.
    ASSERT_EQ(load(R"([
      { "clips": [ { "service": "ogre.color", "length": 10, "properties": { "color": "#0000ffff" } } ] },
      { "clips": [ { "service": "ogre.group.sample", "length": 10, "geometry": "[0:90 160x90]", "tracks": [
          { "clips": [ { "service": "ogre.color", "length": 10, "properties": { "color": "#ff0000ff" } } ] },
          { "clips": [ { "service": "ogre.group.sample", "length": 10, "geometry": "[160:90 160x90]", "tracks": [
              { "clips": [ { "service": "ogre.color", "length": 10,
                             "properties": { "color": "#ffff00ff" } } ] } ] } ] } ] } ] } ])"),
              0)
        << loader.error();
    draw(0);
    RenderImage out(W, H);
    ASSERT_TRUE(out.ok());
    out.picture().save("group_nested.png");
    EXPECT_EQ(wrongIn(out, 80, 135, 80, 45, kYellow), 0);
    EXPECT_EQ(wrongIn(out, 0, 90, 80, 90, kRed), 0);
    EXPECT_EQ(wrongIn(out, 80, 90, 80, 45, kRed), 0);
    EXPECT_EQ(wrongIn(out, 0, 0, 320, 90, kBlue), 0);
    EXPECT_EQ(wrongIn(out, 160, 90, 160, 90, kBlue), 0);
}

TEST_F(GroupProducer, HiddenKeepsThePictureOfBeforeAndOutputTypeTwoBuildsNoQuad) {
    ASSERT_EQ(load(kTwoTrackGroup), 0) << loader.error();
    draw(0);
    MVNGroupSample* g = group(1);
    ASSERT_NE(g, nullptr);
    // Hidden: the group's timeline isn't drawn; its texture keeps the
    // picture from before, and frames still name it.
    g->setInt32("hidden", 1);
    MVNTractor* inner = dynamic_cast<MVNTractor*>(g->producer());
    ASSERT_NE(inner, nullptr);
    dynamic_cast<MVNPlaylist*>(inner->getTrack(1))->getClip(0)->setString("color", "#ffff00ff");
    MVNFrame* frame = nullptr;
    ASSERT_EQ(g->getImage(1, &frame), 0);
    EXPECT_EQ(frame->colorFormat(), MVN_COLOR_RTT);
    EXPECT_EQ(frame->rtt(), g->getOutputRtt());
    MVNFrame::pushBackPool(frame);
    {
        RenderImage out(W, H);
        ASSERT_TRUE(out.ok());
        EXPECT_EQ(wrongIn(out, 160, 0, 80, 45, kGreen), 0);
    }
    g->setInt32("hidden", 0);
    draw(1);
    {
        RenderImage out(W, H);
        ASSERT_TRUE(out.ok());
        EXPECT_EQ(wrongIn(out, 160, 0, 80, 45, kYellow), 0);
    }
    g->setInt32("_outputType", 2);
    g->reconfig();
    EXPECT_FALSE(g->hasNode());
    draw(2);
    RenderImage out(W, H);
    ASSERT_TRUE(out.ok());
    EXPECT_EQ(wrongIn(out, 160, 0, 160, 90, kBlue), 0) << "no quad shows the group";
}

}  // namespace
