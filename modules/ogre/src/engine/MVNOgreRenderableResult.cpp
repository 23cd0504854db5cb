#include "engine/MVNOgreRenderableResult.h"

namespace Morvane {

MVNOgreRenderableResult::MVNOgreRenderableResult() : code(0), data(nullptr) {}

MVNOgreRenderableResult::MVNOgreRenderableResult(int c, const std::string& m, void* d)
    : code(c), message(m), data(d) {}

}  // namespace Morvane
