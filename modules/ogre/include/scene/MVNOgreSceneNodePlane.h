#pragma once
#include <string>

#include "MVNOgreExport.h"
#include "MVNOgreForward.h"
#include "scene/MVNOgreSceneNodeImpl.h"

namespace Morvane {

class MVNOgreAnimation;

// A quad in the 3D scene: a plane mesh of width x height, its entity and a
// child of the scene's root node. The node stands at the depth it is given
// (zOrder by its users) and the plane a further zOrder in front of it, so a
// quad placed by its users stands at twice its zOrder. Every quad lies in render
// queue group 50 with its zOrder as priority, so a higher zOrder is drawn
// later, over the lower ones, whatever the distance (a zOrder above 65535
// wraps). The scene manager is looked up by name for each use, so it must
// exist when the node is built and destroyed. Render thread only.
class MVN_OGRE_API MVNOgreSceneNodePlane : public MVNOgreSceneNodeImpl {
public:
    // width and height in world units; fractions are kept, so that a quad
    // shrunk for its depth covers whole pixels on screen.
    MVNOgreSceneNodePlane(const std::string& sceneName, Ogre::MaterialPtr material, float width, float height,
                          int zOrder, const Ogre::Vector3& position);
    ~MVNOgreSceneNodePlane() override;
    MVNOgreSceneNodePlane(const MVNOgreSceneNodePlane&) = delete;
    MVNOgreSceneNodePlane& operator=(const MVNOgreSceneNodePlane&) = delete;

    void setPosition(float x, float y, float z) override;
    void setCorners(float left, float top, float right, float bottom) override {}
    void setVisible(bool visible) override;
    void setAnimation(int type) override;
    void updateAnimation(int position) override;
    void* getAnimationObject() override;
    void setRotation(int degrees) override;
    // Rebuilds the entity with its plane at the new depth; the material and
    // the node's position stay.
    void setZOrder(int zOrder) override;

    Ogre::SceneNode* getNode() const { return node; }
    const std::string& getEntityName() const { return entityName; }
    const std::string& getMeshName() const { return meshName; }
    float getWidth() const { return width; }
    float getHeight() const { return height; }

    // How much smaller than its picture a quad of zOrder must be, and how
    // much nearer the axis its centre, to cover on screen the pixels it
    // would cover at depth 0, seen by a camera `distance` away on the axis:
    // (distance - 2 zOrder) / distance, the quad standing at twice its
    // zOrder. 1 without a camera (distance 0 or less); 0 for a quad at the
    // camera or behind it.
    static float depthRatio(int zOrder, float distance);

private:
    // Builds mesh and entity of width x height anew, dropping old ones of
    // the same names.
    void _createEntity(const std::string& meshName, const std::string& entityName, float width, float height,
                       int zOrder);
    // Puts the entity in its queue slot, gives it the material and hangs it
    // on the node.
    void _attachEntity();

    Ogre::SceneNode* node = nullptr;          // child of the scene's root
    std::string sceneName;                    // engine scene manager it lives in
    std::string entityName;                   // generated from "CSNEntity"
    std::string meshName;                     // generated from "CSNMesh"
    std::string nodeName;                     // generated from "SceneNodePlane"; kept, unused by the engine
    MVNOgreAnimation* animation = nullptr;    // owned; built by the first setAnimation with a type
    int animationType = 0;                    // last setAnimation
    float position[3] = {0, 0, 0};            // last position
    int rotation = 0;                         // degrees applied to the node so far
    int zOrder = 0;
    std::shared_ptr<Ogre::Material> material;  // shared with the owning texture node's material
    float width = 0;                           // mesh size in world units
    float height = 0;
};

}  // namespace Morvane
