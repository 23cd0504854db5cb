#include "scene/MVNOgreOpaqueBlending.h"

#include <Ogre.h>

#include <algorithm>
#include <cstring>

#include "core/MVNLog.h"

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

// 255 in every fourth byte from the fourth on. Two pixels a word and four
// words a step, all ANDed together, so that it runs at the speed of a copy;
// it gives up at the first block that has less.
bool everyAlphaIsOpaque(const uint8_t* bgra, size_t pixels) {
    const uint64_t alpha = 0xff000000ff000000ull;
    const size_t words = pixels / 2;
    size_t i = 0;
    while (i < words) {
        const size_t end = std::min(words, i + 2048);
        uint64_t all = ~uint64_t(0);
        for (; i + 4 <= end; i += 4) {
            uint64_t w[4];
            std::memcpy(w, bgra + i * 8, sizeof w);
            all &= w[0] & w[1] & w[2] & w[3];
        }
        for (; i < end; ++i) {
            uint64_t w;
            std::memcpy(&w, bgra + i * 8, sizeof w);
            all &= w;
        }
        if ((all & alpha) != alpha) return false;
    }
    return pixels % 2 == 0 || bgra[(pixels - 1) * 4 + 3] == 0xff;
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
