#pragma once
#include <string>

#include "MVNOgreExport.h"
#include "scene/MVNOgreMaterialImpl.h"
#include "scene/MVNOgreOpaqueBlending.h"

namespace Morvane {

class MVNOgreMaterialTextureImpl;

// A plain textured material made in code: one clamped texture unit, no
// lighting, and, unless depthWrite, alpha blending with depth writes off and
// sorting by render-queue order rather than distance, so that quads stack by
// z-order. Its texture follows MVNOgreMaterialTextureAuto's rule.
//
// An opaque picture is drawn without blending (MVNOgreOpaqueBlending). Nothing
// in the scene depends on the quads' depth, so they don't test it either.
class MVN_OGRE_API MVNOgreMaterialNormal : public MVNOgreMaterialImpl {
public:
    MVNOgreMaterialNormal(int width, int height, const std::string& textureName, bool depthWrite);
    ~MVNOgreMaterialNormal() override;
    MVNOgreMaterialNormal(const MVNOgreMaterialNormal&) = delete;
    MVNOgreMaterialNormal& operator=(const MVNOgreMaterialNormal&) = delete;

    void updateTexture(uint8_t* data, int width, int height) override;
    Ogre::MaterialPtr getMaterial() override;
    // Name of the texture that unit 0 samples; empty without a texture.
    std::string getTextureName() const;
    // The picture is known to be opaque everywhere and is drawn unblended.
    bool isOpaque() const { return blending.isOpaque(); }
    // Size of the texture that unit 0 samples; false without one.
    bool textureSize(int& width, int& height) const;
    // Samples the nearest texel instead of mixing four, or goes back to the
    // filtering it was made with. For a quad that shows its picture texel
    // for pixel, where both give the same bytes and nearest costs less.
    void setNearest(bool nearest);

private:
    MVNOgreMaterialTextureImpl* texture = nullptr;   // owned; an MVNOgreMaterialTextureAuto
    std::shared_ptr<Ogre::Material> material;       // null when it could not be made
    bool depthWrite = false;                         // opaque and depth-writing instead of blended
    MVNOgreOpaqueBlending blending;                  // while the material blends by alpha
    bool nearest = false;                            // last setNearest
};

}  // namespace Morvane
