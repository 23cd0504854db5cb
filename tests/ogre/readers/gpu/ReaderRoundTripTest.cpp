// Every read strategy brings back the picture that the engine drew: the
// background, a marker in the top-left corner and one in the bottom-right,
// at their exact pixels and with their exact bytes (R,G,B,A, top row first).
#include <gtest/gtest.h>

#include "GpuTestSupport.h"
#include "engine/MVNOgreContext.h"
#include "readers/MVNOgreRenderReader.h"

using namespace Morvane;
using namespace MorvaneTest;

namespace {

struct ReaderCase {
    const char* marker;
    MVNOgreRenderReaderType type;
    bool renderFirst;  // the GL reader reads what renderOneFrame left
};

std::ostream& operator<<(std::ostream& os, const ReaderCase& c) { return os << c.marker; }

class ReaderRoundTrip : public ::testing::TestWithParam<ReaderCase> {
protected:
    Marker windowed{"not_full_screen"};
    Marker reader{GetParam().marker};
};

constexpr int W = 160;
constexpr int H = 90;

TEST_P(ReaderRoundTrip, MarkersComeBackAtTheirPixelsWithExactBytes) {
    EngineRun run(W, H);
    ASSERT_EQ(run.rc, 0);
    auto* ctx = static_cast<MVNOgreContext*>(MVNOgreManager::getSingleton()->getOgreContext());
    ASSERT_NE(ctx->getRenderReader(), nullptr);
    EXPECT_EQ(ctx->getRenderReader()->type(), GetParam().type);

    TestScene::setBackground(kMagenta);
    TestScene::addRect("topLeft", 0, 0, 8, 6, kRed);
    TestScene::addRect("bottomRight", W - 10, H - 4, 10, 4, kGreen);
    TestScene::addRect("inner", 40, 20, 16, 16, kBlue);
    if (GetParam().renderFirst) MVNOgreManager::getSingleton()->renderOneFrame();

    RenderImage image(W, H);
    ASSERT_TRUE(image.ok());
    Picture pic = image.picture();
    pic.save(std::string("reader_") + GetParam().marker + ".png");

    // Each marker's two opposite corners and the background just past them.
    EXPECT_EQ(pic.at(0, 0), kRed);
    EXPECT_EQ(pic.at(7, 5), kRed);
    EXPECT_EQ(pic.at(8, 0), kMagenta);
    EXPECT_EQ(pic.at(0, 6), kMagenta);
    EXPECT_EQ(pic.at(W - 1, H - 1), kGreen);
    EXPECT_EQ(pic.at(W - 10, H - 4), kGreen);
    EXPECT_EQ(pic.at(W - 11, H - 1), kMagenta);
    EXPECT_EQ(pic.at(W - 1, H - 5), kMagenta);
    EXPECT_EQ(pic.at(40, 20), kBlue);
    EXPECT_EQ(pic.at(55, 35), kBlue);
    EXPECT_EQ(pic.at(56, 35), kMagenta);
    EXPECT_EQ(pic.at(0, H - 1), kMagenta);
    EXPECT_EQ(pic.at(W - 1, 0), kMagenta);
}

INSTANTIATE_TEST_SUITE_P(AllReaders, ReaderRoundTrip,
                         ::testing::Values(ReaderCase{"read_use_rtt", MVN_READER_RTT, false},
                                           ReaderCase{"read_use_rtt_sample", MVN_READER_RTT_SAMPLE, false},
                                           ReaderCase{"read_use_direct", MVN_READER_DIRECT, false},
                                           ReaderCase{"read_use_gl", MVN_READER_GL, true}),
                         [](const ::testing::TestParamInfo<ReaderCase>& info) {
                             std::string n = info.param.marker;
                             return n.substr(std::string("read_use_").size());
                         });

}  // namespace
