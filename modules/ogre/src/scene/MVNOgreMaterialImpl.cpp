#include "scene/MVNOgreMaterialImpl.h"

#include <Ogre.h>

namespace Morvane {

void MVNOgreMaterialImpl::setFragmentUniform(const std::string& name, float value) {
    Ogre::MaterialPtr engineMaterial = getMaterial();
    if (!engineMaterial ||
        !Ogre::MaterialManager::getSingleton().resourceExists(engineMaterial->getName(), Ogre::RGN_DEFAULT)) {
        return;
    }
    Ogre::GpuProgramParametersSharedPtr parameters =
        engineMaterial->getTechnique(0)->getPass(0)->getFragmentProgramParameters();
    parameters->_findNamedConstantDefinition(name, false);
    parameters->setNamedConstant(name, value);
}

}  // namespace Morvane
