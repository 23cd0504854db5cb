#pragma once
#include "MVNOgreExport.h"
#include "scene/MVNOgreMaterialTextureImpl.h"

namespace Morvane {

// A texture known to the engine by name, as a rule a render target that
// another service draws into. Nothing travels through it: the quad samples
// the texture on the GPU, and whoever made the texture keeps it.
class MVN_OGRE_API MVNOgreMaterialTextureRTT : public MVNOgreMaterialTextureImpl {
public:
    explicit MVNOgreMaterialTextureRTT(const std::string& textureName);

    const std::string& getTextureName() override;
    // Nothing to copy: the picture is drawn on the GPU.
    void updateTexture(uint8_t* data, int width, int height) override;

private:
    std::string textureName;  // not owned: the texture belongs to its maker
};

}  // namespace Morvane
