#pragma once
#include <string>

#include "MVNOgreExport.h"
#include "scene/MVNOgreMaterialImpl.h"
#include "scene/MVNOgreOpaqueBlending.h"

namespace Morvane {

class MVNOgreMaterialTextureImpl;

// A private clone of a material script whose first texture unit shows the
// picture: the script decides the programs and the addressing, this class
// puts in the texture, blending and no lighting, and compiles the programs
// at once so that uniforms can be set right after construction. Quads of
// filters don't test depth (nothing they draw over depends on it); a filter
// of the catalogue that keeps its input's alpha draws an opaque picture
// without blending (MVNOgreOpaqueBlending).
class MVN_OGRE_API MVNOgreMaterialFilter : public MVNOgreMaterialImpl {
public:
    MVNOgreMaterialFilter(const std::string& materialName, int width, int height, const std::string& textureName);
    ~MVNOgreMaterialFilter() override;
    MVNOgreMaterialFilter(const MVNOgreMaterialFilter&) = delete;
    MVNOgreMaterialFilter& operator=(const MVNOgreMaterialFilter&) = delete;

    void updateTexture(uint8_t* data, int width, int height) override;
    Ogre::MaterialPtr getMaterial() override;
    std::string getTextureName() const;

private:
    MVNOgreMaterialTextureImpl* texture = nullptr;  // owned; an MVNOgreMaterialTextureAuto
    std::shared_ptr<Ogre::Material> material;      // the clone; null when the script is unknown
    bool depthWrite = false;                        // always false
    MVNOgreOpaqueBlending blending;                 // for filters that keep alpha
};

}  // namespace Morvane
