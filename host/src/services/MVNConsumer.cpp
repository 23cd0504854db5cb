#include "services/MVNConsumer.h"

#include "services/MVNProducer.h"

namespace Morvane {

MVNConsumer::MVNConsumer(const MVNProfile& profile) : MVNService(profile, MVN_SERVICE_CONSUMER) {}

MVNConsumer::~MVNConsumer() = default;

int MVNConsumer::seek(int position) {
    setFrame(position < 0 ? 0 : position);
    return 0;
}

int MVNConsumer::connect(MVNProducer* producer) {
    if (producer == nullptr) return -1;
    mProducer.store(producer);
    _OnConnected(producer);
    return 0;
}

void MVNConsumer::disconnect() { mProducer.store(nullptr); }

void MVNConsumer::forward(int frames) { seek(frame() + frames); }

void MVNConsumer::backward(int frames) { seek(frame() - frames); }

}  // namespace Morvane
