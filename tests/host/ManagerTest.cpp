// Host-wide settings.
#include <gtest/gtest.h>

#include <cstdlib>

#include "MVNManager.h"

using namespace Morvane;

TEST(Manager, DefaultsAndSettingsRoundTrip) {
    MVNManager* m = MVNManager::getSingleton();
    EXPECT_EQ(m, MVNManager::getSingleton());
    EXPECT_EQ(m->getIgnoreFrames(), -1) << "no frames are skipped until a consumer says so";
    EXPECT_EQ(m->getUserHome(), std::getenv("HOME"));
    MVNMode mode = m->getMode();
    m->setMode(MVN_MODE_RENDER);
    EXPECT_EQ(m->getMode(), MVN_MODE_RENDER);
    m->setMode(mode);
    m->setIgnoreFrames(3);
    EXPECT_EQ(m->getIgnoreFrames(), 3);
    m->setIgnoreFrames(-1);
    m->setElapsedTimestamp(1.25);
    EXPECT_DOUBLE_EQ(m->getElapsedTimestamp(), 1.25);
    m->setUserHome("/tmp/elsewhere");
    EXPECT_EQ(m->getUserHome(), "/tmp/elsewhere");
    m->setUserHome(std::getenv("HOME"));
    EXPECT_EQ(m->getInvalidResource(), "");
    m->setInvalidResource("missing.png");
    EXPECT_EQ(m->getInvalidResource(), "missing.png");
    m->setInvalidResource("");
}
