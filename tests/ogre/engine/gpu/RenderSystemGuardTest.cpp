// A render system that hasn't started refuses every guarded operation with
// its own message and a harmless fallback; injectObject, setProfile and
// isBusy work before init.
#include <gtest/gtest.h>

#include <cstdio>
#include <functional>

#include "LogCapture.h"
#include "engine/MVNOgreManager.h"
#include "engine/MVNOgreRenderSystem.h"

using namespace Morvane;
using namespace MorvaneTest;

namespace {

struct GuardCase {
    const char* operation;
    std::function<bool(MVNOgreRenderSystem&)> callGivesFallback;
};

std::ostream& operator<<(std::ostream& os, const GuardCase& c) { return os << c.operation; }

const MVNRect kRect(10, 20, 30, 40);

class RenderSystemGuard : public ::testing::TestWithParam<GuardCase> {};

TEST_P(RenderSystemGuard, RefusesBeforeInitWithItsMessage) {
    MVNOgreRenderSystem rs(MVNProfile(64, 64, 25), 0, 0);
    LogCapture log;
    EXPECT_TRUE(GetParam().callGivesFallback(rs));
    std::string message = std::string(GetParam().operation) + " failed, render system not initialized";
    EXPECT_EQ(log.count(MVNLogLevel::Error, "Morvane::MVNRenderSystem", message), 1);
}

INSTANTIATE_TEST_SUITE_P(
    Operations, RenderSystemGuard,
    ::testing::Values(
        GuardCase{"renderOneFrame", [](MVNOgreRenderSystem& rs) { rs.renderOneFrame(); return true; }},
        GuardCase{"getRenderImage", [](MVNOgreRenderSystem& rs) { return rs.getRenderImage() == nullptr; }},
        GuardCase{"getRenderFrame", [](MVNOgreRenderSystem& rs) { return rs.getRenderFrame() == nullptr; }},
        GuardCase{"updateRenderImage", [](MVNOgreRenderSystem& rs) { rs.updateRenderImage(3); return true; }},
        GuardCase{"registerFrameListener",
                  [](MVNOgreRenderSystem& rs) { rs.registerFrameListener(nullptr); return true; }},
        GuardCase{"adjustGeometryProfileToWorld",
                  [](MVNOgreRenderSystem& rs) { return rs.adjustGeometryProfileToWorld(kRect).equals(kRect); }},
        GuardCase{"adjustPointScreenToProfile",
                  [](MVNOgreRenderSystem& rs) {
                      MVNPoint p = rs.adjustPointScreenToProfile(MVNPoint(5, 6));
                      return p.x == 5 && p.y == 6;
                  }},
        GuardCase{"getRenderWindowWidth", [](MVNOgreRenderSystem& rs) { return rs.getRenderWindowWidth() == 0; }}),
    [](const ::testing::TestParamInfo<GuardCase>& info) { return std::string(info.param.operation); });

TEST(RenderSystemBeforeInit, InjectReachesTheManagerAndIsBusyIsQuietlyFalse) {
    MVNOgreRenderSystem rs(MVNProfile(64, 64, 25), 0, 0);
    LogCapture log;
    int marker = 0;
    rs.injectObject("window", &marker);
    char expected[64];
    std::snprintf(expected, sizeof expected, "injectObject:window, %p", static_cast<void*>(&marker));
    EXPECT_TRUE(log.has(MVNLogLevel::Info, "Morvane::MVNRenderSystem", expected));
    EXPECT_TRUE(log.has(MVNLogLevel::Info, "Morvane::MVNOgreManager", expected));
    log.clear();
    EXPECT_FALSE(rs.isBusy());
    EXPECT_EQ(log.lines().size(), 0u);
}

}  // namespace
