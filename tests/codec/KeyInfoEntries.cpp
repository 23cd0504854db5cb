// The key-frame index keeps file order: a pts going back is refused, a
// repeated pts or a stalled time is kept with one warning.
#include <gtest/gtest.h>

#include "KeyInfo.h"
#include "LogCapture.h"

using codec::KeyInfo;
using Morvane::MVNLogLevel;
using MorvaneTest::LogCapture;

namespace {
const char* kTag = "codec::KeyInfo";
}

TEST(KeyInfo, KeepsEntriesInFileOrder) {
    KeyInfo info;
    EXPECT_EQ(0, info.Add(0, 0.0));
    EXPECT_EQ(0, info.Add(6144, 0.48));
    EXPECT_EQ(0, info.Add(12288, 0.96));
    ASSERT_EQ(3, info.Count());
    EXPECT_EQ(6144, info.At(1)->pts);
    EXPECT_DOUBLE_EQ(0.96, info.At(2)->time);
    EXPECT_EQ(nullptr, info.At(3));
    EXPECT_EQ(nullptr, info.At(-1));
}

TEST(KeyInfo, RefusesAPtsGoingBack) {
    LogCapture log;
    KeyInfo info;
    info.Add(1000, 1.0);
    EXPECT_EQ(-1, info.Add(999, 1.5));
    EXPECT_EQ(1, info.Count());
    EXPECT_TRUE(log.has(MVNLogLevel::Error, kTag, "pts:999 not increasing"));
}

TEST(KeyInfo, KeepsTwoKeyFramesWithOnePtsAfterOneWarning) {
    LogCapture log;
    KeyInfo info;
    info.Add(512, 0.04);
    EXPECT_EQ(0, info.Add(512, 0.04));
    EXPECT_EQ(2, info.Count());
    EXPECT_TRUE(log.has(MVNLogLevel::Warn, kTag, "same pts last:512,cur:512"));
    EXPECT_EQ(1, static_cast<int>(log.lines().size()));
}

TEST(KeyInfo, KeepsAStalledTimeWithAWarning) {
    LogCapture log;
    KeyInfo info;
    info.Add(100, 2.0);
    EXPECT_EQ(0, info.Add(200, 1.5));
    EXPECT_EQ(2, info.Count());
    EXPECT_TRUE(log.has(MVNLogLevel::Warn, kTag, "not increasing time (200,1.500000) last(100,2.000000)"));
}

TEST(KeyInfo, DumpLogsEveryEntry) {
    KeyInfo info;
    info.Add(0, 0.0);
    info.Add(90000, 1.0);
    LogCapture log;
    info.Dump();
    EXPECT_TRUE(log.has(MVNLogLevel::Debug, kTag, "0==>0.000000"));
    EXPECT_TRUE(log.has(MVNLogLevel::Debug, kTag, "90000==>1.000000"));
}
