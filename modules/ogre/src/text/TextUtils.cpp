#include "text/TextUtils.h"

#include <OgreEntity.h>
#include <OgreHardwarePixelBuffer.h>
#include <OgreMaterialManager.h>
#include <OgreMeshManager.h>
#include <OgreRenderTexture.h>
#include <OgreRoot.h>
#include <OgreSceneManager.h>
#include <OgreTechnique.h>
#include <OgreTextureManager.h>

#include "core/MVNLog.h"

namespace Morvane {
namespace TextUtils {

namespace {
const char* const kTag = "TextUtils";
const char* const kGroup = Ogre::ResourceGroupManager::DEFAULT_RESOURCE_GROUP_NAME.c_str();
}  // namespace

Ogre::SceneManager* getSceneMgr(const std::string& name) {
    Ogre::Root* root = Ogre::Root::getSingletonPtr();
    if (root == nullptr || !root->hasSceneManager(name)) {
        log_error(kTag, "cant get mgr : %s", name.c_str());
        return nullptr;
    }
    return root->getSceneManager(name);
}

Ogre::SceneNode* getNode(const std::string& mgrName, const std::string& nodeName) {
    Ogre::SceneManager* mgr = getSceneMgr(mgrName);
    if (mgr == nullptr) return nullptr;
    if (!mgr->hasSceneNode(nodeName)) {
        log_error(kTag, "cant get node : %s", nodeName.c_str());
        return nullptr;
    }
    return mgr->getSceneNode(nodeName);
}

Ogre::TexturePtr getTexture(const std::string& name) {
    Ogre::TexturePtr texture = Ogre::TextureManager::getSingleton().getByName(name, kGroup);
    if (!texture) log_error(kTag, "cant get texture : %s", name.c_str());
    return texture;
}

Ogre::RenderTarget* getRenderTarget(const std::string& name) {
    Ogre::TexturePtr texture = Ogre::TextureManager::getSingleton().getByName(name, kGroup);
    Ogre::RenderTarget* target = texture ? texture->getBuffer()->getRenderTarget() : nullptr;
    if (target == nullptr) log_error(kTag, "cant get RenderTarget : %s", name.c_str());
    return target;
}

Ogre::MaterialPtr getMaterial(const std::string& name) {
    Ogre::MaterialPtr material = Ogre::MaterialManager::getSingleton().getByName(name);
    if (!material) log_error(kTag, "cant get material : %s", name.c_str());
    return material;
}

Ogre::MeshPtr getMesh(const std::string& name) {
    Ogre::MeshPtr mesh = Ogre::MeshManager::getSingleton().getByName(name, kGroup);
    if (!mesh) log_error(kTag, "cant get mesh : %s", name.c_str());
    return mesh;
}

Ogre::Entity* getEntity(const std::string& mgrName, const std::string& name) {
    Ogre::SceneManager* mgr = getSceneMgr(mgrName);
    if (mgr == nullptr) return nullptr;
    if (!mgr->hasEntity(name)) {
        log_error(kTag, "cant get entity : %s", name.c_str());
        return nullptr;
    }
    return mgr->getEntity(name);
}

Ogre::AnimationState* getAnimationState(const std::string& mgrName, const std::string& name) {
    Ogre::SceneManager* mgr = getSceneMgr(mgrName);
    if (mgr == nullptr) return nullptr;
    if (!mgr->hasAnimationState(name)) {
        log_error(kTag, "cant get AnimationState : %s", name.c_str());
        return nullptr;
    }
    return mgr->getAnimationState(name);
}

void setMaterialFloat(const std::string& materialName, int pass, const std::string& uniform, float value) {
    Ogre::MaterialPtr material = Ogre::MaterialManager::getSingleton().getByName(materialName);
    if (!material || material->getNumTechniques() == 0 ||
        material->getTechnique(0)->getNumPasses() <= static_cast<unsigned short>(pass)) {
        log_error(kTag, "cant find material : %s", materialName.c_str());
        return;
    }
    Ogre::Pass* p = material->getTechnique(0)->getPass(static_cast<unsigned short>(pass));
    if (!p->hasFragmentProgram()) {
        log_error(kTag, "cant findNamedConstantDefinition : %s", uniform.c_str());
        return;
    }
    Ogre::GpuProgramParametersSharedPtr params = p->getFragmentProgramParameters();
    if (params->_findNamedConstantDefinition(uniform) == nullptr) {
        log_error(kTag, "cant findNamedConstantDefinition : %s", uniform.c_str());
        return;
    }
    params->setNamedConstant(uniform, value);
}

void removeTexture(const std::string& name) {
    Ogre::TextureManager& manager = Ogre::TextureManager::getSingleton();
    if (!manager.resourceExists(name, kGroup)) return;
    manager.unload(name, kGroup);
    manager.remove(name, kGroup);
}

void removeMaterial(const std::string& name) {
    Ogre::MaterialManager& manager = Ogre::MaterialManager::getSingleton();
    if (!manager.resourceExists(name, kGroup)) return;
    manager.unload(name, kGroup);
    manager.remove(name, kGroup);
}

void removeMesh(const std::string& name) {
    Ogre::MeshManager& manager = Ogre::MeshManager::getSingleton();
    if (!manager.resourceExists(name, kGroup)) return;
    manager.unload(name, kGroup);
    manager.remove(name, kGroup);
}

void removeEntity(Ogre::SceneManager* mgr, const std::string& name) {
    if (mgr == nullptr || !mgr->hasEntity(name)) return;
    mgr->destroyEntity(name);
}

void removeNode(Ogre::SceneManager* mgr, const std::string& name) {
    if (mgr == nullptr || !mgr->hasSceneNode(name)) return;
    mgr->destroySceneNode(name);
}

}  // namespace TextUtils
}  // namespace Morvane
