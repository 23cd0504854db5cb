// Pixels from memory reach the quad through the texture's discarding lock;
// a frame of another size is scaled into it, with one warning in the
// texture's life. A picture that is opaque everywhere is drawn without
// blending (it gives the same bytes for less work); a picture with any
// transparency is blended over what lies below, and blending someone else
// chose is left alone.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include "LogCapture.h"
#include "engine/MVNOgreManager.h"
#include "scene/MVNOgreRenderTexture.h"
#include "scene/MVNOgreTextureNodePlane.h"
#include "scene/MVNOgreTextureNodeThread.h"
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

using OpaqueDrawing = QuadEngineTest;

constexpr RGBA kHalfBlue{0, 0, 255, 128};
// Half blue over red, blended by alpha.
constexpr RGBA kBlueOverRed{127, 0, 128, 255};

bool near(RGBA a, RGBA b) { return maxColourDifference(a, b) <= 2; }

// A red quad under the picture's quad, both at (100, 50), 64 x 32.
struct Stack {
    Stack() : below("", 64, 32, 320, 180, 1, "") {
        below.setGeometry(MVNRect(100, 50, 64, 32));
        BgraPicture red(64, 32, kRed);
        below.updateTexture(red.data(), 64, 32);
    }
    MVNOgreRenderTexture below;
};

RGBA middleOfThePicture() {
    Composition out(320, 180);
    EXPECT_TRUE(out.ok());
    return out.ok() ? out.at(132, 66) : RGBA{};
}

TEST_F(OpaqueDrawing, UploadedPicturesFollowTheirAlphaFromFrameToFrame) {
    Stack stack;
    LogCapture log;
    MVNOgreRenderTexture picture("", 64, 32, W, H, 2, "");
    picture.setGeometry(MVNRect(100, 50, 64, 32));
    BgraPicture opaque(64, 32, kBlue);
    BgraPicture halfway(64, 32, kBlue);
    halfway.paint(30, 10, 4, 4, kHalfBlue);  // a few pixels are enough
    BgraPicture allHalf(64, 32, kHalfBlue);

    picture.updateTexture(opaque.data(), 64, 32);
    EXPECT_EQ(middleOfThePicture(), kBlue);
    EXPECT_EQ(log.countContaining("drawn opaque"), 1);

    picture.updateTexture(allHalf.data(), 64, 32);
    EXPECT_TRUE(near(middleOfThePicture(), kBlueOverRed)) << middleOfThePicture();
    picture.updateTexture(halfway.data(), 64, 32);
    EXPECT_EQ(log.countContaining("drawn blended"), 1) << "one change, however many frames";

    picture.updateTexture(opaque.data(), 64, 32);
    EXPECT_EQ(middleOfThePicture(), kBlue);
    EXPECT_EQ(log.countContaining("drawn opaque"), 2);
}

// One transparent pixel is enough, wherever it lies: the last of a picture
// with an odd number of pixels here.
TEST_F(OpaqueDrawing, TheLastPixelCounts) {
    LogCapture log;
    MVNOgreRenderTexture picture("", 63, 31, W, H, 2, "");
    picture.setGeometry(MVNRect(100, 50, 63, 31));
    BgraPicture opaque(63, 31, kBlue);
    BgraPicture lastClear(63, 31, kBlue);
    lastClear.paint(62, 30, 1, 1, RGBA{0, 0, 255, 0});
    picture.updateTexture(opaque.data(), 63, 31);
    picture.updateTexture(lastClear.data(), 63, 31);
    Composition out(W, H);
    ASSERT_TRUE(out.ok());
    EXPECT_EQ(log.countContaining("drawn opaque"), 1);
    EXPECT_EQ(log.countContaining("drawn blended"), 1);
}

// A picture file without alpha, found by name in a resource folder, is
// opaque from its first frame; textures with an alpha channel are blended.
TEST_F(OpaqueDrawing, NamedTexturesGoByTheirFormat) {
    std::string folder = std::string(std::getenv("HOME")) + "/opaque-pictures";
    std::filesystem::create_directories(folder);
    {
        std::FILE* f = std::fopen((folder + "/plain-blue.ppm").c_str(), "wb");
        ASSERT_NE(f, nullptr);
        std::fprintf(f, "P6\n64 32\n255\n");
        for (int i = 0; i < 64 * 32; ++i) std::fputc(0, f), std::fputc(0, f), std::fputc(255, f);
        std::fclose(f);
    }
    MVNOgreManager::getSingleton()->addResourceLocation(folder);
    onRenderThread([]() {
        Ogre::TexturePtr t = Ogre::TextureManager::getSingleton().createManual(
            "HalfBluePicture", Ogre::RGN_DEFAULT, Ogre::TEX_TYPE_2D, 64, 32, 0, Ogre::PF_BYTE_BGRA);
        BgraPicture half(64, 32, kHalfBlue);
        t->getBuffer()->blitFromMemory(Ogre::PixelBox(64, 32, 1, Ogre::PF_BYTE_BGRA, half.data()));
    });
    Stack stack;
    LogCapture log;
    {
        MVNOgreRenderTexture file("plain-blue.ppm", 64, 32, W, H, 2, "");
        file.setGeometry(MVNRect(100, 50, 64, 32));
        EXPECT_EQ(middleOfThePicture(), kBlue);
        EXPECT_EQ(log.countContaining("drawn opaque"), 1);
    }
    MVNOgreRenderTexture half("HalfBluePicture", 64, 32, W, H, 2, "");
    half.setGeometry(MVNRect(100, 50, 64, 32));
    EXPECT_TRUE(near(middleOfThePicture(), kBlueOverRed)) << middleOfThePicture();
    EXPECT_EQ(log.countContaining("drawn opaque"), 1);
    onRenderThread([]() { Ogre::TextureManager::getSingleton().remove("HalfBluePicture", Ogre::RGN_DEFAULT); });
}

// Blending set on the quad from outside (additive here) stays, opaque
// pictures or not.
TEST_F(OpaqueDrawing, BlendingSetFromOutsideIsKept) {
    Stack stack;
    using Plane = MVNOgreTextureNodeThread<MVNOgreTextureNodePlane>;
    Plane plane("", 64, 32, W, H, 2, "");
    plane.setGeometry(MVNRect(100, 50, 64, 32));
    plane.setSceneBlending(Ogre::SBF_ONE, Ogre::SBF_ONE);
    BgraPicture blue(64, 32, kBlue);
    plane.updateTexture(blue.data(), 64, 32);
    plane.updateTexture(blue.data(), 64, 32);
    EXPECT_EQ(middleOfThePicture(), (RGBA{255, 0, 255, 255})) << "red plus blue";
}

// The quad of a filter that keeps alpha is drawn opaque under an opaque
// picture; one whose uniform can fade the picture (brightness) stays blended.
TEST_F(OpaqueDrawing, FilterQuadsAreOpaqueOnlyWhenTheFilterKeepsAlpha) {
    Stack stack;
    using Plane = MVNOgreTextureNodeThread<MVNOgreTextureNodePlane>;
    BgraPicture blue(64, 32, kBlue);
    for (const char* filter : {"SaturationFilter", "BrightnessFilter"}) {
        SCOPED_TRACE(filter);
        LogCapture log;
        Plane plane("", 64, 32, W, H, 2, filter);
        plane.setGeometry(MVNRect(100, 50, 64, 32));
        plane.updateTexture(blue.data(), 64, 32);
        EXPECT_EQ(middleOfThePicture(), kBlue);
        EXPECT_EQ(log.countContaining("drawn opaque"), std::string(filter) == "SaturationFilter" ? 1 : 0);
    }
}

}  // namespace
