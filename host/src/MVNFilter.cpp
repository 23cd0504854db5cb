#include "MVNFilter.h"

#include "MVNProducer.h"

namespace Morvane {

MVNFilter::MVNFilter(const MVNProfile& profile, MVNFilterType type, MVNFilterTypeUse use)
    : MVNService(profile, MVN_SERVICE_FILTER), mFilterType(type), mFilterTypeUse(use) {}

MVNFilter::~MVNFilter() = default;

MVNProducer* MVNFilter::connectedProducer() const { return dynamic_cast<MVNProducer*>(mConnected.load()); }

}  // namespace Morvane
