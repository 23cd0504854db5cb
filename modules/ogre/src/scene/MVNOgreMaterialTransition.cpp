#include "scene/MVNOgreMaterialTransition.h"

#include <Ogre.h>

#include "core/MVNLog.h"
#include "engine/MVNOgreManager.h"
#include "scene/MVNOgreMaterialManager.h"
#include "scene/MVNOgreMaterialTextureAuto.h"

namespace Morvane {

namespace {
const char* const kTag = "MVNOgreMaterialTransition";

Ogre::GpuProgramParametersSharedPtr fragmentParameters(const std::shared_ptr<Ogre::Material>& material) {
    return material->getTechnique(0)->getPass(0)->getFragmentProgramParameters();
}
}  // namespace

MVNOgreMaterialTransition::MVNOgreMaterialTransition(const std::string& materialName, int widthA, int heightA,
                                                     int widthB, int heightB, const std::string& textureNameA,
                                                     const std::string& textureNameB) {
    Ogre::MaterialPtr clone = MVNOgreMaterialManager::getSingleton()->getByName(materialName);
    if (!clone) {
        log_error(kTag, "not find material %s", materialName.c_str());
        return;
    }
    try {
        textureA = new MVNOgreMaterialTextureAuto(widthA, heightA, textureNameA);
        textureB = new MVNOgreMaterialTextureAuto(widthB, heightB, textureNameB);
        Ogre::Pass* pass = clone->getTechnique(0)->getPass(0);
        Ogre::TextureUnitState* unitA = pass->createTextureUnitState(textureA->getTextureName(), 0);
        pass->createTextureUnitState(textureB->getTextureName(), 0);
        if (MVNOgreManager::getSingleton()->isUseTextureFiltering()) {
            log_debug(kTag, "useTextureFiltering");
            unitA->setTextureFiltering(Ogre::TFO_BILINEAR);
        }
        clone->load(false);
    } catch (const std::exception& e) {
        log_error(kTag, "load material %s failed: %s", materialName.c_str(), e.what());
        delete textureA;
        delete textureB;
        textureA = textureB = nullptr;
        Ogre::MaterialManager::getSingleton().remove(clone);
        return;
    }
    material = clone;
}

MVNOgreMaterialTransition::~MVNOgreMaterialTransition() {
    delete textureA;
    delete textureB;
    textureA = textureB = nullptr;
    if (material) {
        Ogre::MaterialManager::getSingleton().remove(Ogre::MaterialPtr(material));
        material.reset();
    }
}

Ogre::MaterialPtr MVNOgreMaterialTransition::getMaterial() { return material; }

void MVNOgreMaterialTransition::process(float progress) {
    if (material) fragmentParameters(material)->setNamedConstant("progress", progress);
}

void MVNOgreMaterialTransition::setUniformFloat(const std::string& name, float value) {
    if (!material) return;
    try {
        Ogre::GpuProgramParametersSharedPtr parameters = fragmentParameters(material);
        parameters->_findNamedConstantDefinition(name, false);
        parameters->setNamedConstant(name, value);
    } catch (const std::exception&) {
        // A constant the program doesn't declare: nothing to set.
    }
}

void MVNOgreMaterialTransition::setUniformFloat4(const std::string& name, float x, float y, float z, float w) {
    if (!material) return;
    try {
        Ogre::GpuProgramParametersSharedPtr parameters = fragmentParameters(material);
        parameters->_findNamedConstantDefinition(name, false);
        parameters->setNamedConstant(name, Ogre::Vector4(x, y, z, w));
    } catch (const std::exception&) {
        // A constant the program doesn't declare: nothing to set.
    }
}

void MVNOgreMaterialTransition::setInputTexture(int unit, const std::string& name) {
    if (!material) return;
    Ogre::Pass* pass = material->getTechnique(0)->getPass(0);
    if (unit < 0 || unit >= static_cast<int>(pass->getNumTextureUnitStates())) return;
    Ogre::TextureUnitState* state = pass->getTextureUnitState(static_cast<unsigned short>(unit));
    if (state->getTextureName() != name) state->setTextureName(name);
}

void MVNOgreMaterialTransition::updateTextureA(uint8_t* data, int width, int height) {
    if (textureA) textureA->updateTexture(data, width, height);
}

void MVNOgreMaterialTransition::updateTextureB(uint8_t* data, int width, int height) {
    if (textureB) textureB->updateTexture(data, width, height);
}

}  // namespace Morvane
