// The first producers as a host builds them, by service name through its
// factory: their pictures come back from the composed frame at their
// geometry, the pattern moves from frame to frame, and the image producer
// shows a texture that lies on the GPU already.
#include <gtest/gtest.h>

#include "LogCapture.h"
#include "timeline/MVNFactory.h"
#include "core/MVNFrame.h"
#include "timeline/MVNManager.h"
#include "services/MVNProducer.h"
#include "producers/MVNProducerImage.h"
#include "QuadTestSupport.h"

using namespace Morvane;
using namespace MorvaneTest;

namespace {

class ProducerServices : public QuadEngineTest {
protected:
    void TearDown() override {
        for (const std::string& id : ids_) MVNFactory::getSingleton()->destroyService(id);
        MVNManager::getSingleton()->setMode(MVN_MODE_EDIT);
        QuadEngineTest::TearDown();
    }

    MVNProducer* make(MVNProperties props) {
        std::string id = MVNFactory::getSingleton()->createProducer(profile(), props);
        if (id.empty()) return nullptr;
        ids_.push_back(id);
        return MVNFactory::getSingleton()->getProducerById(id);
    }

    // Asks the producer for `position` and gives the frame back; the frame's
    // colour type.
    static int show(MVNProducer* producer, int position) {
        MVNFrame* frame = nullptr;
        if (producer->getImage(position, &frame) != 0 || frame == nullptr) return -1;
        int type = frame->colorFormat();
        MVNFrame::pushBackPool(frame);
        return type;
    }

    std::vector<std::string> ids_;
};

TEST_F(ProducerServices, ColourClipShowsAtItsGeometryWithABorderBlueInByteOrder) {
    MVNProperties props;
    props.setString("service", "ogre.color");
    props.setInt32("width", 100);
    props.setInt32("height", 100);
    props.setColor("color", MVNColor4B(0, 255, 0, 255));
    props.setBoolean("border", true);
    MVNProducer* colour = make(props);
    ASSERT_NE(colour, nullptr);
    colour->setGeometry(MVNRect(10, 10, 100, 100));
    EXPECT_EQ(show(colour, 0), MVN_COLOR_BGRA);
    Composition out(W, H);
    ASSERT_TRUE(out.ok());
    out.save("colour_service");
    EXPECT_EQ(out.at(9, 60), kMagenta);
    EXPECT_EQ(out.at(110, 60), kMagenta);
    // Four pixels on the top and left, three on the bottom and right.
    EXPECT_EQ(out.at(10, 109), kBlue);      // top-left corner
    EXPECT_EQ(out.at(13, 60), kBlue);       // fourth column
    EXPECT_EQ(out.at(14, 60), kGreen);
    EXPECT_EQ(out.at(60, 106), kBlue);      // fourth row from the top
    EXPECT_EQ(out.at(60, 105), kGreen);
    EXPECT_EQ(out.at(60, 12), kBlue);       // third row from the bottom
    EXPECT_EQ(out.at(60, 13), kGreen);
    EXPECT_EQ(out.at(107, 60), kBlue);      // third column from the right
    EXPECT_EQ(out.at(106, 60), kGreen);
}

TEST_F(ProducerServices, PixelBufferPatternChangesBetweenFrames) {
    MVNProperties props;
    props.setString("service", "ogre.pixelbuffer");
    props.setInt32("width", 64);
    props.setInt32("height", 64);
    MVNProducer* pattern = make(props);
    ASSERT_NE(pattern, nullptr);
    pattern->setGeometry(MVNRect(128, 58, 64, 64));
    ASSERT_EQ(show(pattern, 0), MVN_COLOR_BGRA);
    RGBA first, firstBorder;
    {
        Composition out(W, H);
        ASSERT_TRUE(out.ok());
        first = out.at(160, 90);
        firstBorder = out.at(128, 58);
    }
    show(pattern, 45);
    Composition out(W, H);
    ASSERT_TRUE(out.ok());
    RGBA later = out.at(160, 90);
    // Blue and green follow the position: cos 0 folds to 205, cos 45 to 230.
    EXPECT_EQ(first.b, 205);
    EXPECT_EQ(first.g, 205);
    EXPECT_EQ(later.b, 230);
    EXPECT_EQ(later.g, 230);
    EXPECT_GE(later.r, 200);
    EXPECT_LE(later.r, 249);
    EXPECT_EQ(firstBorder, (RGBA{0, 205, 255, 255}));
    EXPECT_EQ(out.at(191, 121), (RGBA{0, 230, 255, 255}));
}

class ImageProducer : public ProducerServices {
protected:
    void SetUp() override {
        ProducerServices::SetUp();
        // A picture on the GPU that some other service owns: red with a
        // green 8 x 8 marker in its top-left corner.
        onRenderThread([]() {
            Ogre::TexturePtr t = Ogre::TextureManager::getSingleton().createManual(
                "StillPicture", Ogre::RGN_DEFAULT, Ogre::TEX_TYPE_2D, 64, 32, 0, Ogre::PF_BYTE_BGRA);
            BgraPicture picture(64, 32, kRed);
            picture.paint(0, 0, 8, 8, kGreen);
            t->getBuffer()->blitFromMemory(Ogre::PixelBox(64, 32, 1, Ogre::PF_BYTE_BGRA, picture.data()));
        });
    }
};

TEST_F(ImageProducer, ShowsTheNamedTextureWithBlankFrames) {
    MVNProperties props;
    props.setString("service", "ogre.image");
    props.setString("resource", "StillPicture");
    props.setInt32("render.width", 64);
    props.setInt32("render.height", 32);
    props.setRect("geometry", MVNRect(20, 30, 64, 32));
    MVNProducer* image = make(props);
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(image->getRenderType(0), 1);
    MVNFrame* frame = nullptr;
    ASSERT_EQ(image->getImage(17, &frame), 0);
    EXPECT_EQ(frame->colorFormat(), MVN_COLOR_BLANK);
    EXPECT_EQ(frame->width(), 0);
    EXPECT_EQ(frame->height(), 0);
    MVNFrame::pushBackPool(frame);
    Composition out(W, H);
    ASSERT_TRUE(out.ok());
    out.save("image_service");
    EXPECT_EQ(out.countWrong(20, 30, 64, 32, kRed, kMagenta), 8 * 8);
    EXPECT_EQ(out.at(20, 61), kGreen);
}

TEST_F(ImageProducer, RotationPropertyIsAppliedAndMinusOneIsNot) {
    std::unique_ptr<MVNProducerImage> image(MVNProducerImage::create(profile(), "StillPicture", 0));
    ASSERT_NE(image, nullptr);
    EXPECT_EQ(image->getLength(), 250);
    EXPECT_EQ(image->getIn(), 0);
    EXPECT_EQ(image->getOut(), 249);
    image->setRect("geometry", MVNRect(128, 74, 64, 32));
    image->setInt32("rotation", -1);
    {
        Composition out(W, H);
        ASSERT_TRUE(out.ok());
        EXPECT_EQ(out.countWrong(128, 74, 64, 32, kRed, kMagenta), 8 * 8);
    }
    image->setInt32("rotation", 90);
    Composition out(W, H);
    ASSERT_TRUE(out.ok());
    EXPECT_EQ(out.countWrong(144, 58, 32, 64, kRed, kMagenta), 8 * 8);
}

TEST_F(ImageProducer, EndOfClipReleasesTheQuadOnlyWhenRendering) {
    std::unique_ptr<MVNProducerImage> image(MVNProducerImage::create(profile(), "StillPicture", 0));
    ASSERT_NE(image, nullptr);
    MVNManager::getSingleton()->setMode(MVN_MODE_PREVIEW);
    image->onClipEnd();
    EXPECT_NE(image->renderTexture(), nullptr);
    MVNManager::getSingleton()->setMode(MVN_MODE_RENDER);
    image->onClipEnd();
    EXPECT_EQ(image->renderTexture(), nullptr);
    // A released clip comes back with init.
    EXPECT_EQ(image->init(), 0);
    EXPECT_NE(image->renderTexture(), nullptr);
}

}  // namespace
