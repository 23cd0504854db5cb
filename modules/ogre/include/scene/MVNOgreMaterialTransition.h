#pragma once
#include <cstdint>
#include <string>

#include "MVNOgreExport.h"
#include "MVNOgreForward.h"

namespace Morvane {

class MVNOgreMaterialTextureImpl;

// A private clone of a transition script with two pictures, A in texture
// unit 0 and B in unit 1, added here: the script's pass has none of its own.
// Blending, lighting and depth stay as the script says. Render thread only.
class MVN_OGRE_API MVNOgreMaterialTransition {
public:
    MVNOgreMaterialTransition(const std::string& materialName, int widthA, int heightA, int widthB, int heightB,
                              const std::string& textureNameA, const std::string& textureNameB);
    ~MVNOgreMaterialTransition();
    MVNOgreMaterialTransition(const MVNOgreMaterialTransition&) = delete;
    MVNOgreMaterialTransition& operator=(const MVNOgreMaterialTransition&) = delete;

    Ogre::MaterialPtr getMaterial();
    // Sets the fragment constant "progress"; a script without it throws.
    void process(float progress);
    // A constant the program doesn't have is skipped without a word.
    void setUniformFloat(const std::string& name, float value);
    // The same for a vec4 constant.
    void setUniformFloat4(const std::string& name, float x, float y, float z, float w);
    // Makes unit 0 (A) or 1 (B) sample the texture `name`.
    void setInputTexture(int unit, const std::string& name);
    void updateTextureA(uint8_t* data, int width, int height);
    void updateTextureB(uint8_t* data, int width, int height);

private:
    MVNOgreMaterialTextureImpl* textureA = nullptr;  // owned; an MVNOgreMaterialTextureAuto
    MVNOgreMaterialTextureImpl* textureB = nullptr;  // owned; an MVNOgreMaterialTextureAuto
    std::shared_ptr<Ogre::Material> material;       // the clone; null when the script is unknown
};

}  // namespace Morvane
