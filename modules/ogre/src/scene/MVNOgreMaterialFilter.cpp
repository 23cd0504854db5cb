#include "scene/MVNOgreMaterialFilter.h"

#include <Ogre.h>

#include "filters/MVNFilterCatalogue.h"
#include "core/MVNLog.h"
#include "engine/MVNOgreManager.h"
#include "scene/MVNOgreMaterialManager.h"
#include "scene/MVNOgreMaterialTextureAuto.h"

namespace Morvane {

namespace {
const char* const kTag = "MVNOgreMaterialFilter";
}

MVNOgreMaterialFilter::MVNOgreMaterialFilter(const std::string& materialName, int width, int height,
                                             const std::string& textureName) {
    Ogre::MaterialPtr clone = MVNOgreMaterialManager::getSingleton()->getByName(materialName);
    if (!clone) {
        log_error(kTag, "not find material %s", materialName.c_str());
        return;
    }
    try {
        texture = new MVNOgreMaterialTextureAuto(width, height, textureName);
        Ogre::Pass* pass = clone->getTechnique(0)->getPass(0);
        // The picture goes into the script's first unit; the script decides
        // its addressing. A script without one gets one.
        Ogre::TextureUnitState* unit = pass->getNumTextureUnitStates() > 0
                                           ? pass->getTextureUnitState(0)
                                           : pass->createTextureUnitState();
        unit->setTextureName(texture->getTextureName());
        if (MVNOgreManager::getSingleton()->isUseTextureFiltering()) {
            log_debug(kTag, "useTextureFiltering");
            unit->setTextureFiltering(Ogre::TFO_BILINEAR);
        }
        pass->setDepthWriteEnabled(false);
        pass->setDepthCheckEnabled(false);
        pass->setSceneBlending(Ogre::SBT_TRANSPARENT_ALPHA);
        pass->setLightingEnabled(false);
        clone->setDiffuse(Ogre::ColourValue(1, 1, 1, 1));
        clone->setAmbient(Ogre::ColourValue(1, 1, 1, 1));
        // Compiles the programs now, on the render thread, so that uniforms
        // can be set at once.
        clone->load(false);
    } catch (const std::exception& e) {
        log_error(kTag, "load material %s failed: %s", materialName.c_str(), e.what());
        delete texture;
        texture = nullptr;
        Ogre::MaterialManager::getSingleton().remove(clone);
        return;
    }
    material = clone;
    // Only a filter that hands its input's alpha on keeps an opaque picture
    // opaque.
    const MVNFilterCatalogueEntry* entry = MVNFilterCatalogue::find(materialName);
    if (entry != nullptr && entry->keepsAlpha) {
        blending.adopt(material.get());
        blending.followTexture(textureName);
    }
}

MVNOgreMaterialFilter::~MVNOgreMaterialFilter() {
    delete texture;
    texture = nullptr;
    if (material) {
        Ogre::MaterialManager::getSingleton().remove(Ogre::MaterialPtr(material));
        material.reset();
    }
}

void MVNOgreMaterialFilter::updateTexture(uint8_t* data, int width, int height) {
    if (texture == nullptr) return;
    texture->updateTexture(data, width, height);
    blending.followUpload(data, width, height);
}

Ogre::MaterialPtr MVNOgreMaterialFilter::getMaterial() { return material; }

std::string MVNOgreMaterialFilter::getTextureName() const { return texture ? texture->getTextureName() : ""; }

}  // namespace Morvane
