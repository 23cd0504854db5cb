#include "core/MVNBase.h"

#include <atomic>

namespace Morvane {

namespace {
// Ids start at 1 so that 0 never names a live object.
std::atomic<unsigned> gNextId{1};
}  // namespace

MVNBase::MVNBase() : mId(gNextId.fetch_add(1, std::memory_order_relaxed)) {}

}  // namespace Morvane
