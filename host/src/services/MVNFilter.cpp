#include "services/MVNFilter.h"

#include "services/MVNProducer.h"

namespace Morvane {

MVNFilter::MVNFilter(const MVNProfile& profile, MVNFilterType type, MVNFilterTypeUse use)
    : MVNService(profile, MVN_SERVICE_FILTER), mFilterType(type), mFilterTypeUse(use) {}

MVNFilter::~MVNFilter() {
    // A filter deleted while attached must not stay in its producer's chain.
    if (MVNProducer* p = connectedProducer()) p->_dropFilter(this);
}

MVNProducer* MVNFilter::connectedProducer() const { return dynamic_cast<MVNProducer*>(mConnected.load()); }

}  // namespace Morvane
