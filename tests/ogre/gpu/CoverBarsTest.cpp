// Letterbox bars: when the profile and the render window differ in shape the
// picture is fitted into the window and the rest is covered black, in the
// frames that the reader brings back. Exact rows and columns.
#include <gtest/gtest.h>

#include "GpuTestSupport.h"
#include "LogCapture.h"
#include "MVNByteBufferPool.h"
#include "MVNOgreCoverLayer.h"

using namespace Morvane;
using namespace MorvaneTest;

namespace {

struct BarCase {
    const char* name;
    int profileW, profileH, winW, winH;
    int barRows;     // black rows at the top and at the bottom
    int barColumns;  // black columns at the left and at the right
};

class CoverBars : public ::testing::TestWithParam<BarCase> {
protected:
    void SetUp() override { touchMarker("not_full_screen"); }
    void TearDown() override { removeMarker("not_full_screen"); }
};

// Every pixel of a few columns and rows across the picture, against the bar
// layout: black inside a bar, the magenta background elsewhere.
void expectBars(const Picture& pic, int barRows, int barColumns) {
    auto expected = [&](int x, int y) {
        bool inBar = y < barRows || y >= pic.height - barRows || x < barColumns || x >= pic.width - barColumns;
        return inBar ? kBlack : kMagenta;
    };
    int wrong = 0;
    for (int x : {0, barColumns - 1, barColumns, pic.width / 2, pic.width - barColumns - 1, pic.width - barColumns,
                  pic.width - 1}) {
        if (x < 0 || x >= pic.width) continue;
        for (int y = 0; y < pic.height; ++y) {
            if (!(pic.at(x, y) == expected(x, y)) && wrong++ < 5) {
                ADD_FAILURE() << "pixel (" << x << "," << y << ") is " << pic.at(x, y) << ", expected "
                              << expected(x, y);
            }
        }
    }
    for (int y : {0, barRows - 1, barRows, pic.height / 2, pic.height - barRows - 1, pic.height - barRows,
                  pic.height - 1}) {
        if (y < 0 || y >= pic.height) continue;
        for (int x = 0; x < pic.width; ++x) {
            if (!(pic.at(x, y) == expected(x, y)) && wrong++ < 5) {
                ADD_FAILURE() << "pixel (" << x << "," << y << ") is " << pic.at(x, y) << ", expected "
                              << expected(x, y);
            }
        }
    }
    EXPECT_EQ(wrong, 0);
}

TEST_P(CoverBars, BarsCoverExactlyWhatThePictureDoesNotFill) {
    const BarCase& c = GetParam();
    EngineRun run(c.profileW, c.profileH, c.winW, c.winH);
    ASSERT_EQ(run.rc, 0);
    TestScene::setBackground(kMagenta);
    MVNByteBuffer* image = MVNOgreManager::getSingleton()->getRenderImage();
    ASSERT_NE(image, nullptr);
    Picture pic{image->ptr(), c.winW, c.winH};
    pic.save(std::string("cover_") + c.name + ".png");
    expectBars(pic, c.barRows, c.barColumns);
    MVNByteBufferPool::sRelease(image);
}

INSTANTIATE_TEST_SUITE_P(Layouts, CoverBars,
                         ::testing::Values(
                             // 1080 of 1200 rows: 60 black rows above and below.
                             BarCase{"wide_in_taller", 1920, 1080, 1920, 1200, 60, 0},
                             // 1080 * 1080 / 1920 = 607 columns: (1920 - 607) / 2 = 656 each side.
                             BarCase{"portrait_in_wide", 1080, 1920, 1920, 1080, 0, 656},
                             BarCase{"small_letterbox", 160, 90, 160, 120, 15, 0}),
                         [](const ::testing::TestParamInfo<BarCase>& info) { return info.param.name; });

TEST(CoverBarsProfileChange, MatchingProfileHidesTheBarsAndADifferentOneBringsThemBack) {
    touchMarker("not_full_screen");
    {
        EngineRun run(160, 90, 160, 120);
        ASSERT_EQ(run.rc, 0);
        TestScene::setBackground(kMagenta);
        MVNOgreManager* m = MVNOgreManager::getSingleton();

        m->setProfile(MVNProfile(160, 120, 25));
        MVNByteBuffer* image = m->getRenderImage();
        ASSERT_NE(image, nullptr);
        expectBars(Picture{image->ptr(), 160, 120}, 0, 0);
        MVNByteBufferPool::sRelease(image);

        m->setProfile(MVNProfile(90, 120, 25));  // 90 of 160 columns: 35 each side
        image = m->getRenderImage();
        ASSERT_NE(image, nullptr);
        expectBars(Picture{image->ptr(), 160, 120}, 0, 35);
        MVNByteBufferPool::sRelease(image);
    }
    removeMarker("not_full_screen");
}

TEST(CoverBarsEqualSize, WindowOfTheProfileSizeGetsNoBars) {
    touchMarker("not_full_screen");
    {
        EngineRun run(160, 90);
        ASSERT_EQ(run.rc, 0);
        TestScene::setBackground(kMagenta);
        MVNByteBuffer* image = MVNOgreManager::getSingleton()->getRenderImage();
        ASSERT_NE(image, nullptr);
        expectBars(Picture{image->ptr(), 160, 90}, 0, 0);
        MVNByteBufferPool::sRelease(image);
    }
    removeMarker("not_full_screen");
}

struct FitCase {
    int pw, ph, rw, rh, fw, fh;
};

class FitProfileIntoWindow : public ::testing::TestWithParam<FitCase> {};

TEST_P(FitProfileIntoWindow, KeepsTheAspectInIntegers) {
    const FitCase& c = GetParam();
    int fw = -1, fh = -1;
    ASSERT_TRUE(MVNOgreCoverLayer::adjustSizeFill(c.pw, c.ph, c.rw, c.rh, &fw, &fh));
    EXPECT_EQ(fw, c.fw);
    EXPECT_EQ(fh, c.fh);
}

INSTANTIATE_TEST_SUITE_P(Sizes, FitProfileIntoWindow,
                         ::testing::Values(FitCase{1920, 1080, 1920, 1200, 1920, 1080},
                                           FitCase{1080, 1920, 1920, 1080, 607, 1080},
                                           FitCase{1280, 720, 1280, 720, 1280, 720},
                                           FitCase{720, 576, 1920, 1080, 1350, 1080}));

TEST(CoverLayerUpdate, ZeroProfileWidthIsRefusedWithTheLoggedReason) {
    MVNOgreCoverLayer layer;  // no bars built: nothing to move
    LogCapture log;
    layer.update(0, 1080, 1920, 1080);
    EXPECT_TRUE(log.has(MVNLogLevel::Error, "Morvane::MVNOgreCoverLayer", "AdjustSizeFill failed"));
    int fw = 0, fh = 0;
    EXPECT_FALSE(MVNOgreCoverLayer::adjustSizeFill(1920, 0, 1920, 1080, &fw, &fh));
}

}  // namespace
