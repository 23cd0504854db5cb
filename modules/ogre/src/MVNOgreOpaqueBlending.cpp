#include "MVNOgreOpaqueBlending.h"

#include <Ogre.h>

#include <algorithm>

#include "MVNLog.h"

namespace Morvane {

namespace {
const char* const kTag = "MVNOgreOpaqueBlending";

bool namedTextureIsOpaque(const std::string& name) {
    Ogre::TextureManager& textures = Ogre::TextureManager::getSingleton();
    Ogre::TexturePtr texture = textures.getByName(name, Ogre::RGN_DEFAULT);
    if (!texture || !texture->isLoaded()) {
        // Render textures and uploaded pictures are made loaded; a texture
        // left unloaded is a file's, known by name to the resource groups.
        if (!Ogre::ResourceGroupManager::getSingleton().resourceExistsInAnyGroup(name)) return false;
        try {
            texture = textures.load(name, Ogre::RGN_DEFAULT);
        } catch (const std::exception& e) {
            log_debug(kTag, "texture %s not loaded yet: %s", name.c_str(), e.what());
            return false;
        }
    }
    return texture && texture->isLoaded() && !Ogre::PixelUtil::hasAlpha(texture->getFormat());
}

// 255 in every fourth byte from the fourth on; gives up at the first chunk
// that has less.
bool everyAlphaIsOpaque(const uint8_t* bgra, size_t pixels) {
    const size_t chunk = 1024;
    for (size_t start = 0; start < pixels; start += chunk) {
        size_t end = std::min(pixels, start + chunk);
        uint8_t all = 0xff;
        for (size_t i = start; i < end; ++i) all &= bgra[i * 4 + 3];
        if (all != 0xff) return false;
    }
    return true;
}
}  // namespace

void MVNOgreOpaqueBlending::adopt(Ogre::Material* material) {
    this->material = material;
    owned = material != nullptr;
    opaqueApplied = false;
}

void MVNOgreOpaqueBlending::followTexture(const std::string& textureName) {
    if (owned && !textureName.empty()) _set(namedTextureIsOpaque(textureName));
}

void MVNOgreOpaqueBlending::followUpload(const uint8_t* bgra, int width, int height) {
    if (owned && bgra != nullptr && width > 0 && height > 0) {
        _set(everyAlphaIsOpaque(bgra, static_cast<size_t>(width) * height));
    }
}

void MVNOgreOpaqueBlending::_set(bool opaque) {
    if (material == nullptr || opaque == opaqueApplied) return;
    static const Ogre::SceneBlendFactor kFactors[2][2] = {
        {Ogre::SBF_SOURCE_ALPHA, Ogre::SBF_ONE_MINUS_SOURCE_ALPHA}, {Ogre::SBF_ONE, Ogre::SBF_ZERO}};
    const Ogre::SceneBlendFactor* was = kFactors[opaqueApplied];
    const Ogre::SceneBlendFactor* now = kFactors[opaque];
    for (Ogre::Technique* technique : material->getTechniques()) {
        if (technique->getNumPasses() == 0) continue;
        Ogre::Pass* pass = technique->getPass(0);
        if (pass->getSourceBlendFactor() != was[0] || pass->getDestBlendFactor() != was[1] ||
            pass->getSourceBlendFactorAlpha() != was[0] || pass->getDestBlendFactorAlpha() != was[1]) {
            owned = false;
            return;
        }
    }
    for (Ogre::Technique* technique : material->getTechniques()) {
        if (technique->getNumPasses() > 0) technique->getPass(0)->setSceneBlending(now[0], now[1]);
    }
    opaqueApplied = opaque;
    log_debug(kTag, "%s drawn %s", material->getName().c_str(), opaque ? "opaque" : "blended");
}

}  // namespace Morvane
