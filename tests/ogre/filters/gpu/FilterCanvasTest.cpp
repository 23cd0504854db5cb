// "ogre.filter.canvas" through the real engine: a portrait picture in a
// landscape profile stands centred at its own size on a background that is
// a smooth blur of itself, a colour, or (when the file is missing) the
// picture's blur after all; the strength reaches the blur as 4s - 3.
#include <gtest/gtest.h>

#include <cmath>
#include <memory>

#include "FilterMediaHarness.h"
#include "LogCapture.h"
#include "PictureClip.h"
#include "core/MVNByteBufferPool.h"
#include "core/MVNFrame.h"
#include "filters/MVNFilterCanvas.h"
#include "filters/MVNOgreFilterPass.h"
#include "scene/MVNOgreMaterialFilter.h"
#include "scene/MVNOgreMaterialImpl.h"
#include "scene/MVNOgreTextureNodePlane.h"
#include "scene/MVNOgreTextureNodeThread.h"

using namespace Morvane;
using namespace MorvaneTest;

namespace {

constexpr int W = 320;
constexpr int H = 180;
constexpr int PW = 90;
constexpr int PH = 160;
// Where the picture must stand, top-left origin.
constexpr int X0 = (W - PW) / 2;
constexpr int Y0 = (H - PH) / 2;

class FilterCanvas : public SharedEngineTest<W, H> {
protected:
    static void SetUpTestSuite() {
        SharedEngineTest::SetUpTestSuite();
        sPicture = testChart(PW, PH);
    }

    static std::unique_ptr<MVNFilterCanvas> canvas(int type, const std::function<void(MVNFilterCanvas&)>& set = {}) {
        auto f = std::make_unique<MVNFilterCanvas>(MVNProfile(W, H, 25), type);
        if (set) set(*f);
        f->init();
        return f;
    }

    static Image play(PictureClip& clip, int position = 0) {
        MVNFrame* frame = nullptr;
        EXPECT_EQ(clip.getImage(position, &frame), 0);
        if (frame) MVNFrame::pushBackPool(frame);
        return composed();
    }

    static bool inPicture(int x, int y) { return x >= X0 && x < X0 + PW && y >= Y0 && y < Y0 + PH; }

    // The picture stands unscaled at the centre. Its quad is sampled
    // bilinearly a few hundredths of a pixel off the texel grid, so the
    // sharp checker edges leak a few levels; a shift by one pixel would leak
    // a hundred.
    static void expectPictureCentred(const Image& out) {
        ASSERT_EQ(out.rgba.size(), size_t(W * H * 4));
        int worst = 0;
        double sum = 0;
        for (int y = 0; y < PH; ++y)
            for (int x = 0; x < PW; ++x) {
                RGBA a = out.at(X0 + x, Y0 + y), b = sPicture.at(x, y);
                int d = std::max({std::abs(a.r - b.r), std::abs(a.g - b.g), std::abs(a.b - b.b)});
                worst = std::max(worst, d);
                sum += d;
            }
        EXPECT_LE(worst, 8);
        EXPECT_LE(sum / (PW * PH), 1.0);
    }

    // Largest step between neighbours of the background, and whether any
    // background pixel is the clear colour.
    static std::pair<int, bool> backgroundSteps(const Image& out) {
        int worst = 0;
        bool magenta = false;
        for (int y = 0; y + 1 < H; ++y)
            for (int x = 0; x + 1 < W; ++x) {
                if (inPicture(x, y) || inPicture(x + 1, y) || inPicture(x, y + 1)) continue;
                RGBA c = out.at(x, y), r = out.at(x + 1, y), d = out.at(x, y + 1);
                magenta = magenta || (c.r == 255 && c.g == 0 && c.b == 255);
                for (RGBA n : {r, d}) worst = std::max({worst, std::abs(c.r - n.r), std::abs(c.g - n.g), std::abs(c.b - n.b)});
            }
        return {worst, magenta};
    }

    static float passUniform(MVNFilterCanvas& f, const std::string& name) {
        float value = NAN;
        onRenderThread([&]() {
            if (f.pass() == nullptr || f.pass()->getMaterial() == nullptr) return;
            Ogre::MaterialPtr m = f.pass()->getMaterial()->getMaterial();
            auto params = m->getTechnique(0)->getPass(0)->getFragmentProgramParameters();
            if (const Ogre::GpuConstantDefinition* def = params->_findNamedConstantDefinition(name)) {
                value = *params->getFloatPointer(def->physicalIndex);
            }
        });
        return value;
    }

    static Image sPicture;
};
Image FilterCanvas::sPicture;

TEST_F(FilterCanvas, APortraitPictureStandsCentredOnASmoothBlurOfItself) {
    PictureClip clip(sPicture, false);
    auto f = canvas(0);
    ASSERT_EQ(clip.attach(f.get()), 0);
    Image out = play(clip);
    expectPictureCentred(out);
    auto [step, magenta] = backgroundSteps(out);
    EXPECT_FALSE(magenta) << "the background covers the frame";
    // A smooth blur: neighbours across rows and across columns within a few
    // levels (a pass that skips texels leaves bands of 5 and more here).
    EXPECT_LE(step, 3) << "blurred without bands";
    // The top of the picture is its bright marker and red ramp, the bottom
    // its colour band: the background above and below follows them.
    RGBA left = out.at(X0 - 20, H / 2), right = out.at(X0 + PW + 20, H / 2);
    EXPECT_LT(left.r + 40, right.r) << "red rises to the right, as in the picture";
}

TEST_F(FilterCanvas, AColourBackgroundIsThatColourAndFollowsItsChange) {
    PictureClip clip(sPicture, false);
    auto f = canvas(2, [](MVNFilterCanvas& c) { c.setColor("color", MVNColor4B(32, 64, 128, 255)); });
    ASSERT_EQ(clip.attach(f.get()), 0);
    EXPECT_FALSE(f->hasPass());
    Image out = play(clip);
    expectPictureCentred(out);
    EXPECT_EQ(out.at(5, 5), (RGBA{32, 64, 128, 255}));
    EXPECT_EQ(out.at(W - 5, H - 5), (RGBA{32, 64, 128, 255}));
    f->setColor("color", MVNColor4B(200, 100, 0, 255));
    out = play(clip, 1);
    EXPECT_EQ(out.at(5, H / 2), (RGBA{200, 100, 0, 255}));
    expectPictureCentred(out);
}

TEST_F(FilterCanvas, AMissingBackgroundFileFallsBackToThePicturesBlur) {
    LogCapture log;
    PictureClip clip(sPicture, false);
    auto f = canvas(1, [](MVNFilterCanvas& c) { c.setString("resource", "/no/such/background.png"); });
    EXPECT_EQ(log.count(MVNLogLevel::Error, "Morvane::MVNFilterCanvas", "load image /no/such/background.png failed"),
              1);
    EXPECT_FALSE(f->hasBackground());
    ASSERT_EQ(clip.attach(f.get()), 0);
    Image out = play(clip);
    expectPictureCentred(out);
    auto [step, magenta] = backgroundSteps(out);
    EXPECT_FALSE(magenta);
    EXPECT_LE(step, 3);

    auto unnamed = canvas(1);
    EXPECT_EQ(log.count(MVNLogLevel::Error, "Morvane::MVNFilterCanvas", "not set image path"), 1);
}

TEST_F(FilterCanvas, StrengthReachesTheBlurAsFourTimesLessThree) {
    PictureClip clip(sPicture, false);
    auto f = canvas(0);
    ASSERT_EQ(clip.attach(f.get()), 0);
    LogCapture log;
    f->setDouble("ufmStrength", 1.0);
    EXPECT_FLOAT_EQ(passUniform(*f, "ufmStrength"), 1.0f);
    f->setDouble("ufmStrength", 2.0);
    EXPECT_FLOAT_EQ(passUniform(*f, "ufmStrength"), 5.0f);
    f->setDouble("ufmStrength", -0.5);
    EXPECT_FLOAT_EQ(passUniform(*f, "ufmStrength"), 5.0f) << "a negative strength is refused";
    EXPECT_EQ(log.count(MVNLogLevel::Warn, "Morvane::MVNFilterCanvas", "invalid ufmStrength value -0.500000"), 1);
    // A wider blur smooths the background further.
    f->setDouble("ufmStrength", 1.0);
    int plain = backgroundSteps(play(clip)).first;
    f->setDouble("ufmStrength", 2.0);
    int wide = backgroundSteps(play(clip, 1)).first;
    EXPECT_LT(wide, plain);
}

}  // namespace
