#pragma once
#include <cstdint>
#include <string>

#include "MVNOgreForward.h"

namespace Morvane {

// One engine material bound to the picture it shows. Render thread only.
class MVNOgreMaterialImpl {
public:
    virtual ~MVNOgreMaterialImpl() = default;
    // Into the material's own texture; see MVNOgreMaterialTextureImpl.
    virtual void updateTexture(uint8_t* data, int width, int height) = 0;
    // Null when the material could not be had.
    virtual Ogre::MaterialPtr getMaterial() = 0;
    // Sets a float uniform of the first pass's fragment program. Does
    // nothing when the material is gone; throws the engine's exception for a
    // uniform the program doesn't have, for the caller to report.
    void setFragmentUniform(const std::string& name, float value);
};

}  // namespace Morvane
