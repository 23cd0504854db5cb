// Named profiles, "WxH@FPS" strings and explicit numbers.
#include <gtest/gtest.h>

#include "LogCapture.h"
#include "core/MVNProfile.h"

using namespace Morvane;

namespace {
struct Named {
    const char* name;
    int width, height, num, den;
};
class ProfileByName : public ::testing::TestWithParam<Named> {};
}  // namespace

TEST_P(ProfileByName, ResolvesSizeAndRate) {
    const Named& c = GetParam();
    MVNProfile p(c.name);
    EXPECT_TRUE(p.isValid());
    EXPECT_TRUE(MVNProfile::exists(c.name));
    EXPECT_EQ(p.width(), c.width);
    EXPECT_EQ(p.height(), c.height);
    EXPECT_EQ(p.fpsNum(), c.num);
    EXPECT_EQ(p.fpsDen(), c.den);
    EXPECT_DOUBLE_EQ(p.fps(), static_cast<double>(c.num) / c.den);
}

INSTANTIATE_TEST_SUITE_P(Table, ProfileByName,
                         ::testing::Values(Named{"sd_480_29.97p", 720, 480, 30000, 1001},
                                           Named{"1920x1080@30000/1001", 1920, 1080, 30000, 1001},
                                           Named{"640x360@29.97", 640, 360, 30000, 1001},
                                           Named{"100x50@12.5", 100, 50, 25, 2}));

TEST(Profile, UnknownNameIsLoggedAndFallsBackToAUsableProfile) {
    MorvaneTest::LogCapture log;
    for (const char* bad : {"hd_1080_31p", "0x720@25", "1280x720@", "1280x720@-5", "x@", ""}) {
        MVNProfile p(bad);
        EXPECT_FALSE(p.isValid()) << bad;
        EXPECT_FALSE(MVNProfile::exists(bad)) << bad;
        EXPECT_EQ(p.width(), 960) << bad;
        EXPECT_GT(p.fps(), 0.0) << bad;
    }
    EXPECT_TRUE(log.has(MVNLogLevel::Error, "Morvane::MVNProfile", "unknown profile:hd_1080_31p, using hdv_540_24p"));
    MVNProfile fallback;
    EXPECT_EQ(fallback.name(), "hdv_540_24p");
    EXPECT_DOUBLE_EQ(fallback.fps(), 24.0);
}

TEST(Profile, NumbersMakeAnyProfile) {
    MVNProfile p(333, 111, 15);
    EXPECT_TRUE(p.isValid());
    EXPECT_EQ(p.name(), "333x111@15");
    EXPECT_EQ(MVNProfile(p.name()).height(), 111);
    MVNProfile bad(0, 10, 25);
    EXPECT_FALSE(bad.isValid());
    EXPECT_EQ(bad.width(), 960);
}
