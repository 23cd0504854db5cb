// Clocks of playback and the rate calculators of the statistics overlay.
#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <thread>

#include "LogCapture.h"
#include "core/MVNClock.h"
#include "core/MVNFpsCalc.h"
#include "core/MVNRenderFpsCalc.h"
#include "core/MVNSpeedCalc.h"
#include "core/MVNSpeedClock.h"
#include "core/MVNTimeSpaceCalc.h"
#include "core/MVNVideoClock.h"

using namespace Morvane;
using MorvaneTest::LogCapture;

namespace {

TEST(Clock, StandsAtZeroUntilStartedAndFreezesWhenPaused) {
    MVNClock clock;
    EXPECT_EQ(0, clock.GetTimestamp());
    EXPECT_FALSE(clock.isRunning());
    clock.start();
    std::this_thread::sleep_for(std::chrono::milliseconds(30));
    const int64_t running = clock.GetTimestamp();
    EXPECT_GE(running, 29);  // a sleep lasts at least as long as asked
    clock.pause();
    const int64_t frozen = clock.GetTimestamp();
    EXPECT_GE(frozen, running);
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    EXPECT_EQ(frozen, clock.GetTimestamp());
    clock.start();
    std::this_thread::sleep_for(std::chrono::milliseconds(15));
    EXPECT_GE(clock.GetTimestamp(), frozen + 14);
}

TEST(SpeedClock, IsBaseTimesSpeedTruncatedTowardZero) {
    const struct {
        double speed;
        int64_t base, expected;
    } cases[] = {{0.5, 7, 3}, {0.5, -7, -3}, {1.5, 3, 4}, {0.3, 10, 3}, {0.0, 999, 0}};
    for (const auto& c : cases) {
        MVNSpeedClock clock(c.speed);
        clock.setTimestamp(c.base);
        EXPECT_EQ(c.expected, clock.GetTimestamp()) << c.speed << " x " << c.base;
    }
}

TEST(VideoClock, CountsFromItsStartAtItsSpeed) {
    MVNVideoClock doubled(1000, 2.0);
    EXPECT_EQ(1000, doubled.GetTimestamp());
    doubled.clock()->setTimestamp(250);  // 250 ms of wall time played
    EXPECT_EQ(1500, doubled.GetTimestamp());
    MVNVideoClock plain(40, 1.0);
    plain.clock()->setTimestamp(250);
    EXPECT_EQ(290, plain.GetTimestamp());
    EXPECT_EQ(40, plain.startTime());
}

// ---- Rate calculators -----------------------------------------------------

TEST(FpsCalc, MeanOfTheFramesInTheWindowIsTheirRate) {
    MVNFpsCalc fps(10);
    EXPECT_STREQ("fps:0.00", fps.getString());
    fps.addFrame(1000);
    EXPECT_FLOAT_EQ(0, fps.getMeanFPS());  // one frame has no interval
    int64_t t = 1000;
    for (int i = 0; i < 20; ++i) fps.addFrame(t += 40);
    EXPECT_STREQ("fps:25.00", fps.getString());
    for (int i = 0; i < 10; ++i) fps.addFrame(t += 20);
    // The window holds the last ten frames: nine intervals of 20 ms.
    EXPECT_FLOAT_EQ(50, fps.getMeanFPS());
    fps.reset();
    EXPECT_FLOAT_EQ(0, fps.getMeanFPS());
}

TEST(RenderFpsCalc, RateIsInverseOfMeanRenderTime) {
    MVNRenderFpsCalc calc(4);
    EXPECT_FLOAT_EQ(0, calc.getMeanFPS());
    calc.addRenderTime(10000);
    calc.addRenderTime(30000);
    EXPECT_FLOAT_EQ(50, calc.getMeanFPS());  // mean 20 ms
    EXPECT_STREQ("render fps:50.00 (20.000 ms)", calc.getString());
    for (int i = 0; i < 4; ++i) calc.addRenderTime(5000);
    EXPECT_FLOAT_EQ(200, calc.getMeanFPS());  // the slow renders slid out
    calc.endFrame();                          // without beginFrame: ignored
    EXPECT_FLOAT_EQ(200, calc.getMeanFPS());
}

TEST(SpeedCalc, SpeedIsMediaOverWallTimeAndRealIsTheLastStep) {
    MVNSpeedCalc calc(8);
    EXPECT_STREQ("speed:0.00 real:0.00", calc.getString());
    calc.tick(0, 1000);
    calc.tick(80, 1040);
    calc.tick(160, 1080);
    calc.tick(300, 1080);  // no wall time passed: ignored
    EXPECT_FLOAT_EQ(2, calc.getSpeed());
    calc.tick(200, 1120);
    EXPECT_FLOAT_EQ(200.0f / 120.0f, calc.getSpeed());
    EXPECT_FLOAT_EQ(1, calc.getSpeedReal());
    EXPECT_EQ("speed:1.67 real:1.00", calc.toString());
    calc.tick(50, 1200);  // a seek back starts over
    calc.tick(75, 1300);
    EXPECT_FLOAT_EQ(0.25f, calc.getSpeed());
}

TEST(TimeSpaceCalc, LogsStartAndElapsedTicksUnderItsTags) {
    LogCapture log;
    MVNTimeSpaceCalc calc("readPixels");
    calc.start();
    volatile double sink = 0;
    for (int i = 0; i < 100000; ++i) sink = sink + i * 0.5;
    const int64_t ticks = calc.end();
    EXPECT_GE(ticks, 0);
    EXPECT_TRUE(log.has(MVNLogLevel::Debug, "TimeCalc", "readPixels start..."));
    EXPECT_TRUE(log.has(MVNLogLevel::Debug, "TimeCalcAuto", "readPixels times:" + std::to_string(ticks)));
}

}  // namespace
