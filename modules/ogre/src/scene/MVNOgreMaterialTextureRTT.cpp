#include "scene/MVNOgreMaterialTextureRTT.h"

namespace Morvane {

MVNOgreMaterialTextureRTT::MVNOgreMaterialTextureRTT(const std::string& textureName) : textureName(textureName) {}

const std::string& MVNOgreMaterialTextureRTT::getTextureName() { return textureName; }

void MVNOgreMaterialTextureRTT::updateTexture(uint8_t* data, int width, int height) {}

}  // namespace Morvane
