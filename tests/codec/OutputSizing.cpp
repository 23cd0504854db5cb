// Output sizes: square pixels pass through, non-square pixels stretch the
// shorter side, limits fit the display shape, every changed side is even.
#include <gtest/gtest.h>

#include "LogCapture.h"
#include "OutputSize.h"

using codec::OutputSize;
using Morvane::MVNLogLevel;

struct SizingCase {
    const char* name;
    int w, h, sarNum, sarDen, maxW, maxH;
    bool scale;
    int outW, outH;
    float dar;
};

class OutputSizing : public ::testing::TestWithParam<SizingCase> {};

TEST_P(OutputSizing, GivesTheExpectedSize) {
    const SizingCase& c = GetParam();
    OutputSize out = OutputSize::Compute(c.w, c.h, c.sarNum, c.sarDen, c.maxW, c.maxH, c.scale);
    EXPECT_EQ(c.outW, out.width);
    EXPECT_EQ(c.outH, out.height);
    EXPECT_NEAR(c.dar, out.dar, 1e-5);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, OutputSizing,
    ::testing::Values(
        SizingCase{"UnknownSarIsSquare", 640, 480, 0, 1, 0, 0, false, 640, 480, 4.0f / 3},
        SizingCase{"PalWideKeepsWidth", 720, 576, 16, 15, 0, 0, false, 720, 540, 4.0f / 3},
        SizingCase{"PortraitKeepsHeight", 480, 640, 2, 1, 0, 0, false, 960, 640, 1.5f},
        SizingCase{"OddResultIsEvened", 64, 48, 1001, 1000, 0, 0, false, 64, 46, 64064.0f / 48000},
        SizingCase{"ScaledDownToWidth", 1920, 1080, 1, 1, 640, 480, true, 640, 360, 16.0f / 9},
        SizingCase{"ScaledDownToHeight", 1080, 1920, 1, 1, 640, 360, true, 202, 360, 9.0f / 16},
        SizingCase{"LimitsIgnoredWithoutScale", 1920, 1080, 1, 1, 640, 360, false, 1920, 1080, 16.0f / 9},
        SizingCase{"AnamorphicScaledToDisplayShape", 720, 576, 64, 45, 640, 360, true, 640, 360, 16.0f / 9}),
    [](const ::testing::TestParamInfo<SizingCase>& info) { return std::string(info.param.name); });

TEST(OutputSizingLog, TellsWhenACorrectionChangesNothing) {
    MorvaneTest::LogCapture log;
    OutputSize out = OutputSize::Compute(64, 48, 999, 1000, 0, 0, false);
    EXPECT_EQ(64, out.width);
    EXPECT_EQ(48, out.height);
    EXPECT_EQ(1, log.countContaining("calc scale size equal to origin size"));
    EXPECT_TRUE(log.has(MVNLogLevel::Debug, "codec::FFmpegDecoderImpl",
                        "dar 1.332000 calc scale size equal to origin size"));
}
