#pragma once
#include <string>

#include <OgreMaterial.h>
#include <OgreMesh.h>
#include <OgreTexture.h>

namespace Ogre {
class AnimationState;
class Entity;
class RenderTarget;
class SceneManager;
class SceneNode;
}  // namespace Ogre

namespace Morvane {
namespace TextUtils {

// Look-ups of one engine object by name, on the render thread. A missing
// object is logged under "TextUtils" and gives null or an empty pointer.
Ogre::SceneManager* getSceneMgr(const std::string& name);
Ogre::SceneNode* getNode(const std::string& mgrName, const std::string& nodeName);
Ogre::TexturePtr getTexture(const std::string& name);
Ogre::RenderTarget* getRenderTarget(const std::string& name);
Ogre::MaterialPtr getMaterial(const std::string& name);
Ogre::MeshPtr getMesh(const std::string& name);
Ogre::Entity* getEntity(const std::string& mgrName, const std::string& name);
Ogre::AnimationState* getAnimationState(const std::string& mgrName, const std::string& name);
// Sets a float constant of the fragment program of `pass` of technique 0.
void setMaterialFloat(const std::string& materialName, int pass, const std::string& uniform, float value);

// Removers: each tests that the object exists first, so a second call is
// harmless.
void removeTexture(const std::string& name);
void removeMaterial(const std::string& name);
void removeMesh(const std::string& name);
void removeEntity(Ogre::SceneManager* mgr, const std::string& name);
void removeNode(Ogre::SceneManager* mgr, const std::string& name);

}  // namespace TextUtils
}  // namespace Morvane
