#include "scene/MVNOgreMaterialNormal.h"

#include <Ogre.h>

#include "core/MVNGeneratorStringId.h"
#include "core/MVNLog.h"
#include "engine/MVNOgreDepthClear.h"
#include "engine/MVNOgreManager.h"
#include "scene/MVNOgreMaterialTextureAuto.h"

namespace Morvane {

namespace {
const char* const kTag = "MVNOgreMaterialNormal";
}

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
        } else {
            // Drawn in render-queue order, not by distance, and blended over
            // what lies below: that is what makes z-order work.
            pass->setTransparentSortingEnabled(false);
            pass->setTransparentSortingForced(true);
            created->setDepthWriteEnabled(false);
            created->setDepthCheckEnabled(false);
            created->setSceneBlending(Ogre::SBT_TRANSPARENT_ALPHA);
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
    if (depthWrite) {
        MVNOgreDepthClear::addWriter();
    } else {
        blending.adopt(material.get());
        blending.followTexture(textureName);
    }
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
    blending.followUpload(data, width, height);
}

Ogre::MaterialPtr MVNOgreMaterialNormal::getMaterial() { return material; }

bool MVNOgreMaterialNormal::textureSize(int& width, int& height) const {
    if (texture == nullptr) return false;
    Ogre::TexturePtr engineTexture =
        Ogre::TextureManager::getSingleton().getByName(texture->getTextureName(), Ogre::RGN_DEFAULT);
    if (!engineTexture) return false;
    width = static_cast<int>(engineTexture->getWidth());
    height = static_cast<int>(engineTexture->getHeight());
    return true;
}

void MVNOgreMaterialNormal::setNearest(bool nearest) {
    if (!material || nearest == this->nearest) return;
    this->nearest = nearest;
    Ogre::TextureFilterOptions made = MVNOgreManager::getSingleton()->isUseTextureFiltering() ? Ogre::TFO_BILINEAR
                                                                                                : Ogre::TFO_NONE;
    // Every technique: the shader generator draws with a copy of the first,
    // made when the quad was first drawn.
    for (Ogre::Technique* technique : material->getTechniques()) {
        if (technique->getNumPasses() == 0) continue;
        Ogre::Pass* pass = technique->getPass(0);
        if (pass->getNumTextureUnitStates() == 0) continue;
        Ogre::TextureUnitState* unit = pass->getTextureUnitState(0);
        if (nearest) {
            unit->setTextureFiltering(Ogre::TFO_NONE);
        } else if (made == Ogre::TFO_BILINEAR) {
            unit->setTextureFiltering(Ogre::TFO_BILINEAR);
        } else {
            Ogre::MaterialManager& materials = Ogre::MaterialManager::getSingleton();
            unit->setTextureFiltering(materials.getDefaultTextureFiltering(Ogre::FT_MIN),
                                      materials.getDefaultTextureFiltering(Ogre::FT_MAG),
                                      materials.getDefaultTextureFiltering(Ogre::FT_MIP));
        }
    }
}

std::string MVNOgreMaterialNormal::getTextureName() const { return texture ? texture->getTextureName() : ""; }

}  // namespace Morvane
