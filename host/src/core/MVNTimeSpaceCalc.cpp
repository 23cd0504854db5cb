#include "core/MVNTimeSpaceCalc.h"

#include <ctime>

#include "core/MVNLog.h"

namespace Morvane {

void MVNTimeSpaceCalc::start() {
    log_debug("TimeCalc", "%s start...", mName.c_str());
    mStart = static_cast<int64_t>(clock());
}

int64_t MVNTimeSpaceCalc::end() {
    const int64_t ticks = static_cast<int64_t>(clock()) - mStart;
    log_debug("TimeCalcAuto", "%s times:%lld", mName.c_str(), static_cast<long long>(ticks));
    return ticks;
}

}  // namespace Morvane
