// Clip animations in the composed picture: a colour clip whose "anim" names
// a type moves by it, frame by frame, through its own quad.
#include <gtest/gtest.h>

#include "QuadTestSupport.h"
#include "core/MVNFrame.h"
#include "timeline/MVNFactory.h"
#include "services/MVNProducer.h"

using namespace Morvane;
using namespace MorvaneTest;

namespace {

class ClipAnimation : public QuadEngineTest {
protected:
    void TearDown() override {
        for (const std::string& id : ids_) MVNFactory::getSingleton()->destroyService(id);
        QuadEngineTest::TearDown();
    }

    // A green 100 x 60 clip in the middle of the profile, animated by `type`.
    MVNProducer* greenClip(int type) {
        MVNProperties props;
        props.setString("service", "ogre.color");
        props.setInt32("width", 100);
        props.setInt32("height", 60);
        props.setColor("color", MVNColor4B(0, 255, 0, 255));
        props.setInt32("anim", type);
        std::string id = MVNFactory::getSingleton()->createProducer(profile(), props);
        if (id.empty()) return nullptr;
        ids_.push_back(id);
        MVNProducer* clip = MVNFactory::getSingleton()->getProducerById(id);
        clip->setGeometry(MVNRect(110, 60, 100, 60));
        return clip;
    }

    static void show(MVNProducer* clip, int position) {
        MVNFrame* frame = nullptr;
        ASSERT_EQ(clip->getImage(position, &frame), 0);
        MVNFrame::pushBackPool(frame);
    }

    // Width of the green run through the middle row, and its height through
    // the middle column.
    static std::pair<int, int> greenExtent() {
        Composition out(W, H);
        EXPECT_TRUE(out.ok());
        int width = 0, height = 0;
        for (int x = 0; x < W; ++x) width += maxColourDifference(out.at(x, H / 2), kGreen) <= 8;
        for (int y = 0; y < H; ++y) height += maxColourDifference(out.at(W / 2, y), kGreen) <= 8;
        return {width, height};
    }

    std::vector<std::string> ids_;
};

// Scaling back starts at 75% and swells to 125% a quarter into its ten
// seconds (frame 62.5 of 250 at 25 fps), about its centre.
TEST_F(ClipAnimation, ScalingBackGrowsTheClipBetweenTwoFrames) {
    MVNProducer* clip = greenClip(3);
    ASSERT_NE(clip, nullptr);
    show(clip, 0);
    auto first = greenExtent();
    EXPECT_NEAR(first.first, 75, 2);
    EXPECT_NEAR(first.second, 45, 2);
    show(clip, 62);
    auto later = greenExtent();
    EXPECT_NEAR(later.first, 125, 2);
    EXPECT_NEAR(later.second, 75, 2);
    Composition out(W, H);
    ASSERT_TRUE(out.ok());
    EXPECT_EQ(out.at(W / 2, H / 2), kGreen);  // still about its centre
    EXPECT_EQ(out.at(5, 5), kMagenta);
}

// The turning animations go one degree per frame shown, each its own way: a
// corner above the clip's right end is reached only by the clockwise one.
TEST_F(ClipAnimation, TurningClipsTurnTheirOwnWay) {
    for (int type : {1, 2}) {
        MVNProducer* clip = greenClip(type);
        ASSERT_NE(clip, nullptr);
        for (int position = 0; position < 30; ++position) show(clip, position);
        Composition out(W, H);
        ASSERT_TRUE(out.ok());
        // Thirty degrees about (160, 90): the right end of the clip rises
        // (anticlockwise) or sinks (clockwise).
        RGBA upperRight = out.at(195, 118);
        RGBA lowerRight = out.at(195, 62);
        if (type == 2) {
            EXPECT_EQ(upperRight, kGreen);
            EXPECT_EQ(lowerRight, kMagenta);
        } else {
            EXPECT_EQ(upperRight, kMagenta);
            EXPECT_EQ(lowerRight, kGreen);
        }
        clip->setVisible(false);
    }
}

}  // namespace
