#include "scene/MVNOgreMaterialTextureAuto.h"

#include "scene/MVNOgreMaterialTexturePixelBuffer.h"
#include "scene/MVNOgreMaterialTextureRTT.h"

namespace Morvane {

MVNOgreMaterialTextureAuto::MVNOgreMaterialTextureAuto(int width, int height, const std::string& textureName) {
    // The named texture isn't looked up here: the engine resolves the name
    // when the material loads.
    if (textureName.empty()) {
        texture = new MVNOgreMaterialTexturePixelBuffer(width, height);
    } else {
        texture = new MVNOgreMaterialTextureRTT(textureName);
    }
}

MVNOgreMaterialTextureAuto::~MVNOgreMaterialTextureAuto() { delete texture; }

}  // namespace Morvane
