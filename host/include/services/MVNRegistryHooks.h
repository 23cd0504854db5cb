#pragma once
#include <string>

namespace Morvane {

class MVNProducer;
class MVNProfile;
class MVNProperties;
class MVNRenderTexture;

// The services sit below the registry that builds and keeps them, yet a
// producer draws through a render texture that a module's factory makes and
// a group finds its sub-timeline by id. The registry installs the two
// look-ups when the library loads; until it has, each gives null.
namespace MVNRegistryHooks {

using RenderTextureMaker = MVNRenderTexture* (*)(const std::string& name, const MVNProfile& profile,
                                                 const MVNProperties& properties);
using ProducerFinder = MVNProducer* (*)(const std::string& id);

void install(RenderTextureMaker makeRenderTexture, ProducerFinder findProducer);

// The caller owns the texture.
MVNRenderTexture* createRenderTexture(const std::string& name, const MVNProfile& profile,
                                      const MVNProperties& properties);
MVNProducer* getProducerById(const std::string& id);

}  // namespace MVNRegistryHooks
}  // namespace Morvane
