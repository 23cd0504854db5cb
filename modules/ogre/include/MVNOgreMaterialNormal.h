#pragma once
#include <string>

#include "MVNOgreExport.h"
#include "MVNOgreMaterialImpl.h"

namespace Morvane {

class MVNOgreMaterialTextureImpl;

// A plain textured material made in code: one clamped texture unit, no
// lighting, and, unless depthWrite, alpha blending with depth writes off and
// sorting by render-queue order rather than distance, so that quads stack by
// z-order. Its texture follows MVNOgreMaterialTextureAuto's rule.
//
// Blending a picture that is opaque everywhere gives the bytes it has, so
// such a picture is drawn without blending, which costs far less where the
// raster is done in software: a named texture whose format has no alpha,
// and an uploaded picture whose every alpha byte is 255 (checked at each
// upload). Blending that someone else set on the material is left alone.
// Nothing in the scene depends on depth (the quads don't write it), so the
// quad doesn't test it either.
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

    // Whether the quad is drawn without blending, as an opaque picture.
    bool isDrawnOpaque() const { return opaqueApplied; }

private:
    // Draws without blending while `opaque`, with alpha blending otherwise,
    // on every technique (the shader generator copies the first one).
    void _setOpaque(bool opaque);

    MVNOgreMaterialTextureImpl* texture = nullptr;   // owned; an MVNOgreMaterialTextureAuto
    std::shared_ptr<Ogre::Material> material;       // null when it could not be made
    bool depthWrite = false;                         // opaque and depth-writing instead of blended
    bool blendOwned = false;                         // the blending is still the one this class set
    bool opaqueApplied = false;                      // drawn without blending now
};

}  // namespace Morvane
