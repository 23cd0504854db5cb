// Host-wide settings.
#include <gtest/gtest.h>

#include <cstdlib>

#include "timeline/MVNManager.h"

using namespace Morvane;

TEST(Manager, DefaultsComeFromTheEnvironmentAndSkipNothing) {
    MVNManager* m = MVNManager::getSingleton();
    EXPECT_EQ(m->getIgnoreFrames(), -1) << "no frames are skipped until a consumer says so";
    EXPECT_EQ(m->getUserHome(), std::getenv("HOME"));
    EXPECT_EQ(m->getInvalidResource(), "");
}
