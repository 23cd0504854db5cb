#pragma once
// What the fuzz targets share: a log that stays quiet (its sinks still run,
// so the formatting of every message is exercised) and a check that stops
// the run at a broken promise, so that the input is kept as a finding.
#include <cstdio>
#include <cstdlib>

#include "core/MVNLog.h"

namespace MorvaneFuzz {

inline void quietLog() {
    Morvane::setLogLevel(Morvane::MVNLogLevel::Off);
    Morvane::addLogSink([](const Morvane::MVNLogLine&) {});
}

inline void check(bool ok, const char* promise) {
    if (!ok) {
        std::fprintf(stderr, "broken promise: %s\n", promise);
        std::abort();
    }
}

}  // namespace MorvaneFuzz
