#include "core/MVNGeneratorStringId.h"

namespace Morvane {

MVNGeneratorStringId* MVNGeneratorStringId::getSingleton() {
    static MVNGeneratorStringId* instance = new MVNGeneratorStringId;  // used until exit
    return instance;
}

std::string MVNGeneratorStringId::genStringId(const std::string& prefix) {
    return prefix + "_" + std::to_string(mNext.fetch_add(1, std::memory_order_relaxed));
}

}  // namespace Morvane
