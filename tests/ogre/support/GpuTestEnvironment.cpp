// Every GPU test process gets an X display (see XvfbDisplay.h).
#include "XvfbDisplay.h"

static ::testing::Environment* const kDisplay =
    ::testing::AddGlobalTestEnvironment(new MorvaneTest::XvfbEnvironment());
