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
    ASSERT_EQ(2, info.Count());
    EXPECT_EQ(6144, info.At(1)->pts);
    EXPECT_DOUBLE_EQ(0.48, info.At(1)->time);
    EXPECT_EQ(nullptr, info.At(2));
    EXPECT_EQ(nullptr, info.At(-1));
    LogCapture log;
    info.Dump();
    EXPECT_TRUE(log.has(MVNLogLevel::Debug, kTag, "6144==>0.480000"));
}

TEST(KeyInfo, RefusesAPtsGoingBackButKeepsARepeatedPtsOrAStalledTimeWithAWarning) {
    LogCapture log;
    KeyInfo info;
    info.Add(1000, 1.0);
    EXPECT_EQ(-1, info.Add(999, 1.5));
    EXPECT_EQ(1, info.Count());
    EXPECT_TRUE(log.has(MVNLogLevel::Error, kTag, "pts:999 not increasing"));
    EXPECT_EQ(0, info.Add(1000, 1.0));
    EXPECT_TRUE(log.has(MVNLogLevel::Warn, kTag, "same pts last:1000,cur:1000"));
    EXPECT_EQ(0, info.Add(2000, 0.5));
    EXPECT_TRUE(log.has(MVNLogLevel::Warn, kTag, "not increasing time (2000,0.500000) last(1000,1.000000)"));
    EXPECT_EQ(3, info.Count());
    EXPECT_EQ(3, static_cast<int>(log.lines().size()));  // one line each
}
