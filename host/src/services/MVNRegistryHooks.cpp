#include "services/MVNRegistryHooks.h"

#include <atomic>

namespace Morvane {
namespace MVNRegistryHooks {

namespace {
// Set once while the library loads, read from any thread afterwards.
std::atomic<RenderTextureMaker> gMakeRenderTexture{nullptr};
std::atomic<ProducerFinder> gFindProducer{nullptr};
}  // namespace

void install(RenderTextureMaker makeRenderTexture, ProducerFinder findProducer) {
    gMakeRenderTexture.store(makeRenderTexture);
    gFindProducer.store(findProducer);
}

MVNRenderTexture* createRenderTexture(const std::string& name, const MVNProfile& profile,
                                      const MVNProperties& properties) {
    RenderTextureMaker make = gMakeRenderTexture.load();
    return make != nullptr ? make(name, profile, properties) : nullptr;
}

MVNProducer* getProducerById(const std::string& id) {
    ProducerFinder find = gFindProducer.load();
    return find != nullptr ? find(id) : nullptr;
}

}  // namespace MVNRegistryHooks
}  // namespace Morvane
