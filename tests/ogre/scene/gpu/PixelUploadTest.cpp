// Pixels from memory reach the quad through the texture's discarding lock;
// a frame of another size is scaled into it, with one warning in the
// texture's life.
#include <gtest/gtest.h>

#include "LogCapture.h"
#include "scene/MVNOgreRenderTexture.h"
#include "QuadTestSupport.h"

using namespace Morvane;
using namespace MorvaneTest;

namespace {

const char* const kTextureTag = "MVNOgreMaterialTexturePixelBuffer";

using PixelUpload = QuadEngineTest;

TEST_F(PixelUpload, FrameOfTheTextureSizeIsCopiedAsItIs) {
    // Four quadrants, so that a flip or a swap of red and blue shows.
    BgraPicture picture(64, 32, kRed);
    picture.paint(32, 0, 32, 16, kGreen);
    picture.paint(0, 16, 32, 16, kBlue);
    picture.paint(32, 16, 32, 16, RGBA{255, 255, 255, 255});
    LogCapture log;
    MVNOgreRenderTexture texture("", 64, 32, W, H, 0, "");
    texture.setGeometry(MVNRect(100, 50, 64, 32));
    texture.updateTexture(picture.data(), 64, 32);
    Composition out(W, H);
    ASSERT_TRUE(out.ok());
    out.save("upload_quadrants");
    EXPECT_EQ(out.countInside(100, 66, 32, 16, kRed, false), 0);    // top left
    EXPECT_EQ(out.countInside(132, 66, 32, 16, kGreen, false), 0);  // top right
    EXPECT_EQ(out.countInside(100, 50, 32, 16, kBlue, false), 0);   // bottom left
    EXPECT_EQ(out.countInside(132, 50, 32, 16, (RGBA{255, 255, 255, 255}), false), 0);
    EXPECT_EQ(out.countOutside(100, 50, 64, 32, kMagenta, false), 0);
    EXPECT_EQ(log.countContaining("resccale"), 0);
}

TEST_F(PixelUpload, FrameOfAnotherSizeIsScaledWithOneWarningForGood) {
    LogCapture log;
    MVNOgreRenderTexture texture("", 64, 32, W, H, 0, "");
    texture.setGeometry(MVNRect(100, 50, 64, 32));
    // Half the size: left half red, right half green.
    BgraPicture small(32, 16, kRed);
    small.paint(16, 0, 16, 16, kGreen);
    texture.updateTexture(small.data(), 32, 16);
    {
        Composition out(W, H);
        ASSERT_TRUE(out.ok());
        EXPECT_EQ(out.at(110, 60), kRed);
        EXPECT_EQ(out.at(150, 75), kGreen);
    }
    // Each later frame of that size is scaled as well, without a word.
    BgraPicture blue(32, 16, kBlue);
    texture.updateTexture(blue.data(), 32, 16);
    texture.updateTexture(blue.data(), 32, 16);
    Composition out(W, H);
    ASSERT_TRUE(out.ok());
    EXPECT_EQ(out.countInside(100, 50, 64, 32, kBlue, false), 0);
    EXPECT_EQ(log.count(MVNLogLevel::Warn, kTextureTag, "resccale data 32x16->64x32"), 1);
    EXPECT_EQ(log.countContaining("resccale"), 1);
}

TEST_F(PixelUpload, HiddenQuadDrawsNothingUntilShownAgain) {
    BgraPicture picture(16, 16, kGreen);
    MVNOgreRenderTexture texture("", 16, 16, W, H, 0, "");
    texture.setGeometry(MVNRect(0, 0, 16, 16));
    texture.updateTexture(picture.data(), 16, 16);
    texture.setVisible(false);
    {
        Composition out(W, H);
        ASSERT_TRUE(out.ok());
        EXPECT_EQ(out.at(8, 8), kMagenta);
    }
    texture.setVisible(true);
    Composition out(W, H);
    ASSERT_TRUE(out.ok());
    EXPECT_EQ(out.at(8, 8), kGreen);
}

}  // namespace
