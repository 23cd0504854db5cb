#include "filters/MVNOgreFilterBase.h"

#include <Ogre.h>

#include "core/MVNLog.h"
#include "filters/MVNOgreFilterPass.h"
#include "scene/MVNOgreMaterialFilter.h"

namespace Morvane {

namespace {
const char* const kTag = "MVNOgreFilterBase";

// The one pass that filter materials draw with.
Ogre::Pass* firstPass(MVNOgreMaterialFilter* material) {
    if (material == nullptr) return nullptr;
    Ogre::MaterialPtr engineMaterial = material->getMaterial();
    if (!engineMaterial || engineMaterial->getNumTechniques() == 0) return nullptr;
    Ogre::Technique* technique = engineMaterial->getTechnique(0);
    return technique->getNumPasses() > 0 ? technique->getPass(0) : nullptr;
}

// Points the sampler names of the fragment program at their units.
void bindSamplers(Ogre::Pass* pass) {
    if (!pass->hasFragmentProgram()) return;
    Ogre::GpuProgramParametersSharedPtr params = pass->getFragmentProgramParameters();
    if (params->_findNamedConstantDefinition("inputImageTexture")) params->setNamedConstant("inputImageTexture", 0);
    if (params->_findNamedConstantDefinition("inputImageTextureLut")) {
        params->setNamedConstant("inputImageTextureLut", 1);
    }
}

// The table is sampled between its entries: linear, and never past the edge
// of a slice into the next.
void setUpLutUnit(Ogre::TextureUnitState* unit) {
    unit->setTextureFiltering(Ogre::TFO_BILINEAR);
    unit->setTextureAddressingMode(Ogre::TextureUnitState::TAM_CLAMP);
}

Ogre::TexturePtr createLutTexture(const std::string& name, int width, int height, int type) {
    return Ogre::TextureManager::getSingleton().createManual(name, "General", static_cast<Ogre::TextureType>(type),
                                                             width, height, 0, Ogre::PF_R8G8B8,
                                                             Ogre::TU_STATIC_WRITE_ONLY);
}

void upload(const Ogre::TexturePtr& texture, unsigned char* data, int width, int height) {
    Ogre::PixelBox box(width, height, 1, Ogre::PF_R8G8B8, data);
    texture->getBuffer(0, 0)->blitFromMemory(box);
}
}  // namespace

void MVNOgreFilterBase::_setUniformOn(MVNOgreMaterialFilter* material, const std::string& name, float value) {
    Ogre::Pass* pass = firstPass(material);
    if (pass == nullptr || !pass->hasFragmentProgram()) return;
    Ogre::GpuProgramParametersSharedPtr params = pass->getFragmentProgramParameters();
    if (params->_findNamedConstantDefinition(name)) params->setNamedConstant(name, value);
}

void MVNOgreFilterBase::_setSceneBlendingOn(MVNOgreMaterialFilter* material, int source, int destination) {
    Ogre::Pass* pass = firstPass(material);
    if (pass == nullptr) return;
    pass->setDepthWriteEnabled(false);
    pass->setSceneBlending(static_cast<Ogre::SceneBlendFactor>(source), static_cast<Ogre::SceneBlendFactor>(destination));
}

void MVNOgreFilterBase::_addExtraTextureTo(MVNOgreMaterialFilter* material, const std::string& name,
                                           unsigned char* data, int width, int height, int type) {
    Ogre::TextureManager& textures = Ogre::TextureManager::getSingleton();
    Ogre::Pass* pass = firstPass(material);
    Ogre::TexturePtr texture = textures.getByName(name, "General");
    if (!texture) {
        texture = createLutTexture(name, width, height, type);
        upload(texture, data, width, height);
        if (pass != nullptr) {
            setUpLutUnit(pass->createTextureUnitState(name));
            bindSamplers(pass);
        }
        return;
    }
    if (static_cast<int>(texture->getWidth()) != width || static_cast<int>(texture->getHeight()) != height) {
        textures.remove(texture);
        texture = createLutTexture(name, width, height, type);
    }
    upload(texture, data, width, height);
    if (pass == nullptr) return;
    if (pass->getNumTextureUnitStates() != 2) {
        log_error(kTag, "LutMaterial must have two texture ...");
        return;
    }
    pass->getTextureUnitState(1)->setTexture(texture);
    bindSamplers(pass);
}

void MVNOgreFilterBase::setFirstPass(const std::string& materialName, const std::string& rttName) {
    mFirstPassMaterial = materialName;
    mFirstPassRtt = rttName;
}

std::string MVNOgreFilterBase::_buildFirstPass(int width, int height, const std::string& input) {
    if (mFirstPassMaterial.empty()) return input;
    mFirstPass = new MVNOgreFilterPass(mFirstPassMaterial, width, height, input, mFirstPassRtt);
    return mFirstPassRtt;
}

void MVNOgreFilterBase::_releaseFirstPass() {
    delete mFirstPass;
    mFirstPass = nullptr;
}

}  // namespace Morvane
