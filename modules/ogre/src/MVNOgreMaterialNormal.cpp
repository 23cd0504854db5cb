#include "MVNOgreMaterialNormal.h"

#include <Ogre.h>

#include <algorithm>

#include "MVNGeneratorStringId.h"
#include "MVNLog.h"
#include "MVNOgreDepthClear.h"
#include "MVNOgreManager.h"
#include "MVNOgreMaterialTextureAuto.h"

namespace Morvane {

namespace {
const char* const kTag = "MVNOgreMaterialNormal";

// A picture file's texture is loaded here rather than at its first draw, so
// that its format is known; a name that is not (yet) a loadable resource
// counts as having alpha, and its load and its error stay with the draw.
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

// 255 in every fourth byte from the fourth on.
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

MVNOgreMaterialNormal::MVNOgreMaterialNormal(int width, int height, const std::string& textureName, bool depthWrite)
    : depthWrite(depthWrite) {
    std::string name = MVNGeneratorStringId::getSingleton()->genStringId("NormalMaterial");
    Ogre::MaterialPtr created = Ogre::MaterialManager::getSingleton().create(
        name, Ogre::ResourceGroupManager::DEFAULT_RESOURCE_GROUP_NAME, false, nullptr, nullptr);
    if (!created) {
        log_error(kTag, "not find material %s", name.c_str());
        return;
    }
    try {
        texture = new MVNOgreMaterialTextureAuto(width, height, textureName);
        Ogre::Pass* pass = created->getTechnique(0)->getPass(0);
        Ogre::TextureUnitState* unit = pass->createTextureUnitState(texture->getTextureName(), 0);
        unit->setTextureAddressingMode(Ogre::TextureUnitState::TAM_CLAMP);
        // Bilinear: quads face the camera and their textures have no mip
        // levels, so anisotropic filtering has nothing to add, and where it is
        // emulated (software GL) it blurs even a picture shown at 1:1.
        if (MVNOgreManager::getSingleton()->isUseTextureFiltering()) {
            log_debug(kTag, "useTextureFiltering");
            unit->setTextureFiltering(Ogre::TFO_BILINEAR);
        }
        if (depthWrite) {
            pass->setDepthWriteEnabled(true);
            MVNOgreDepthClear::addWriter();
        } else {
            // Drawn in render-queue order, not by distance, and blended over
            // what lies below: that is what makes z-order work.
            pass->setTransparentSortingEnabled(false);
            pass->setTransparentSortingForced(true);
            created->setDepthWriteEnabled(false);
            created->setDepthCheckEnabled(false);
            created->setSceneBlending(Ogre::SBT_TRANSPARENT_ALPHA);
            blendOwned = true;
        }
        created->setLightingEnabled(false);
        created->setDiffuse(Ogre::ColourValue(1, 1, 1, 1));
        created->setAmbient(Ogre::ColourValue(1, 1, 1, 1));
    } catch (const std::exception& e) {
        // No texture for it (a size the engine refuses): nothing half-made stays.
        log_error(kTag, "create material %s failed: %s", name.c_str(), e.what());
        delete texture;
        texture = nullptr;
        Ogre::MaterialManager::getSingleton().remove(created);
        return;
    }
    material = created;
    if (blendOwned && !textureName.empty()) _setOpaque(namedTextureIsOpaque(textureName));
}

MVNOgreMaterialNormal::~MVNOgreMaterialNormal() {
    if (material && depthWrite) MVNOgreDepthClear::removeWriter();
    delete texture;
    texture = nullptr;
    if (material) {
        Ogre::Pass* pass = material->getTechnique(0)->getPass(0);
        if (pass->getNumTextureUnitStates() > 0) pass->removeTextureUnitState(0);
        Ogre::MaterialManager::getSingleton().remove(Ogre::MaterialPtr(material));
        material.reset();
    }
}

void MVNOgreMaterialNormal::updateTexture(uint8_t* data, int width, int height) {
    if (texture == nullptr) return;
    texture->updateTexture(data, width, height);
    if (blendOwned && data != nullptr && width > 0 && height > 0) {
        _setOpaque(everyAlphaIsOpaque(data, static_cast<size_t>(width) * height));
    }
}

void MVNOgreMaterialNormal::_setOpaque(bool opaque) {
    if (!material || opaque == opaqueApplied) return;
    Ogre::SceneBlendFactor ours[2][2] = {{Ogre::SBF_SOURCE_ALPHA, Ogre::SBF_ONE_MINUS_SOURCE_ALPHA},
                                         {Ogre::SBF_ONE, Ogre::SBF_ZERO}};
    const Ogre::SceneBlendFactor* was = ours[opaqueApplied];
    const Ogre::SceneBlendFactor* now = ours[opaque];
    for (Ogre::Technique* technique : material->getTechniques()) {
        if (technique->getNumPasses() == 0) continue;
        Ogre::Pass* pass = technique->getPass(0);
        if (pass->getSourceBlendFactor() != was[0] || pass->getDestBlendFactor() != was[1] ||
            pass->getSourceBlendFactorAlpha() != was[0] || pass->getDestBlendFactorAlpha() != was[1]) {
            // Blending set from outside: it is the caller's from now on.
            blendOwned = false;
            return;
        }
    }
    for (Ogre::Technique* technique : material->getTechniques()) {
        if (technique->getNumPasses() > 0) technique->getPass(0)->setSceneBlending(now[0], now[1]);
    }
    opaqueApplied = opaque;
    log_debug(kTag, "%s drawn %s", material->getName().c_str(), opaque ? "opaque" : "blended");
}

Ogre::MaterialPtr MVNOgreMaterialNormal::getMaterial() { return material; }

std::string MVNOgreMaterialNormal::getTextureName() const { return texture ? texture->getTextureName() : ""; }

}  // namespace Morvane
