// A picture that is opaque everywhere is drawn without blending (it gives
// the same bytes for less work); a picture with any transparency is blended
// over what lies below, and blending someone else chose is left alone.
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
