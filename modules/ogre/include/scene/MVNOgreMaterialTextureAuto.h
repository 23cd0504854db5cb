#pragma once
#include "MVNOgreExport.h"
#include "scene/MVNOgreMaterialTextureImpl.h"

namespace Morvane {

// The one place that picks the kind of texture: an empty name gives a
// texture of its own that pixels are uploaded into, any other name a
// reference to that existing texture (an RTT, or an image the engine's
// resource system can load). Render thread only.
class MVN_OGRE_API MVNOgreMaterialTextureAuto : public MVNOgreMaterialTextureImpl {
public:
    MVNOgreMaterialTextureAuto(int width, int height, const std::string& textureName);
    ~MVNOgreMaterialTextureAuto() override;
    MVNOgreMaterialTextureAuto(const MVNOgreMaterialTextureAuto&) = delete;
    MVNOgreMaterialTextureAuto& operator=(const MVNOgreMaterialTextureAuto&) = delete;

    const std::string& getTextureName() override { return texture->getTextureName(); }
    void updateTexture(uint8_t* data, int width, int height) override { texture->updateTexture(data, width, height); }

private:
    MVNOgreMaterialTextureImpl* texture = nullptr;  // owned
};

}  // namespace Morvane
