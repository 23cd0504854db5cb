#include "scene/MVNOgreSceneNodePlane.h"

#include <Ogre.h>

#include <algorithm>

#include "core/MVNGeneratorStringId.h"
#include "scene/MVNOgreAnimation.h"

namespace Morvane {

namespace {
// The main queue: every quad of a scene in one group, ordered by priority.
const Ogre::uint8 kQuadQueueGroup = Ogre::RENDER_QUEUE_MAIN;
const float kDegreeInRadians = 0.017453292f;

Ogre::SceneManager* sceneOf(const std::string& sceneName) { return Ogre::Root::getSingleton().getSceneManager(sceneName); }
}  // namespace

MVNOgreSceneNodePlane::MVNOgreSceneNodePlane(const std::string& sceneName, Ogre::MaterialPtr material, float width,
                                             float height, int zOrder, const Ogre::Vector3& position)
    : sceneName(sceneName), zOrder(zOrder), material(material), width(width), height(height) {
    this->position[0] = position.x;
    this->position[1] = position.y;
    this->position[2] = position.z;
    MVNGeneratorStringId* ids = MVNGeneratorStringId::getSingleton();
    entityName = ids->genStringId("CSNEntity");
    meshName = ids->genStringId("CSNMesh");
    nodeName = ids->genStringId("SceneNodePlane");
    _createEntity(meshName, entityName, width, height, zOrder);
    Ogre::SceneManager* scene = sceneOf(sceneName);
    node = scene->getRootSceneNode()->createChildSceneNode(Ogre::Vector3::ZERO, Ogre::Quaternion::IDENTITY);
    node->setPosition(position);
    _attachEntity();
}

MVNOgreSceneNodePlane::~MVNOgreSceneNodePlane() {
    Ogre::Root* root = Ogre::Root::getSingletonPtr();
    if (root == nullptr) return;  // the engine is gone and took everything along
    // Before the node: a key-frame animation's track points at it.
    delete animation;
    animation = nullptr;
    // A scene destroyed first has taken its node and entity along.
    if (root->hasSceneManager(sceneName)) {
        Ogre::SceneManager* scene = root->getSceneManager(sceneName);
        if (node) {
            node->detachObject(entityName);
            scene->getRootSceneNode()->removeAndDestroyChild(node);
        }
        if (scene->hasEntity(entityName)) scene->destroyEntity(entityName);
    }
    node = nullptr;
    Ogre::MeshManager& meshes = Ogre::MeshManager::getSingleton();
    if (meshes.resourceExists(meshName, Ogre::RGN_DEFAULT)) meshes.remove(meshName, Ogre::RGN_DEFAULT);
}

float MVNOgreSceneNodePlane::depthRatio(int zOrder, float distance) {
    if (distance <= 0.0f) return 1.0f;
    // A quad at the camera or behind it can't be seen: it shrinks to
    // nothing rather than turning inside out.
    return std::max(0.0f, (distance - 2.0f * static_cast<float>(zOrder)) / distance);
}

void MVNOgreSceneNodePlane::_createEntity(const std::string& meshName, const std::string& entityName, float width,
                                          float height, int zOrder) {
    Ogre::SceneManager* scene = sceneOf(sceneName);
    if (scene->hasEntity(entityName)) scene->destroyEntity(entityName);
    Ogre::MeshManager& meshes = Ogre::MeshManager::getSingleton();
    if (meshes.resourceExists(meshName, Ogre::RGN_DEFAULT)) meshes.remove(meshName, Ogre::RGN_DEFAULT);
    // The plane's constant is the zOrder as well as the node's z, so a quad
    // stands at twice its zOrder; sizes are meant in world units there
    // (depthRatio).
    Ogre::Plane plane(Ogre::Vector3::UNIT_Z, static_cast<float>(zOrder));
    meshes.createPlane(meshName, Ogre::ResourceGroupManager::DEFAULT_RESOURCE_GROUP_NAME, plane,
                       width, height, 1, 1, true, 1, 1.0f, 1.0f,
                       Ogre::Vector3::UNIT_Y, Ogre::HardwareBuffer::HBU_STATIC_WRITE_ONLY,
                       Ogre::HardwareBuffer::HBU_STATIC_WRITE_ONLY, false, false);
    scene->createEntity(entityName, meshName, Ogre::ResourceGroupManager::AUTODETECT_RESOURCE_GROUP_NAME);
}

void MVNOgreSceneNodePlane::_attachEntity() {
    Ogre::Entity* entity = sceneOf(sceneName)->getEntity(entityName);
    entity->setRenderQueueGroupAndPriority(kQuadQueueGroup, static_cast<Ogre::uint16>(zOrder));
    if (material) entity->setMaterial(Ogre::MaterialPtr(material));
    node->attachObject(entity);
}

void MVNOgreSceneNodePlane::setPosition(float x, float y, float z) {
    position[0] = x;
    position[1] = y;
    position[2] = z;
    if (node) node->setPosition(x, y, z);
    if (animation) animation->setPosition(Ogre::Vector3(x, y, z));
}

void MVNOgreSceneNodePlane::setVisible(bool visible) {
    if (node) node->setVisible(visible, true);
}

// The animation is built here, by the node it moves, rather than by the
// clip's service: only the node knows its scene, where it stands and its
// depth, and a quad that changes size builds a new node, so an animation
// made anywhere else would keep driving a node the engine has destroyed. A
// new node starts its animation afresh.
void MVNOgreSceneNodePlane::setAnimation(int type) {
    animationType = type;
    if (animation) {
        animation->setType(type);
        return;
    }
    if (type == 0 || node == nullptr) return;
    animation = new MVNOgreAnimation(sceneName, node, Ogre::Vector3(position[0], position[1], position[2]), type);
    animation->setZOrder(zOrder);
    animation->init();
}

void MVNOgreSceneNodePlane::updateAnimation(int position) {
    if (animation) animation->update(position);
}

void* MVNOgreSceneNodePlane::getAnimationObject() { return animation; }

void MVNOgreSceneNodePlane::setRotation(int degrees) {
    // The engine's node keeps its orientation: only the difference turns it.
    int delta = degrees - rotation;
    rotation = degrees;
    if (delta != 0 && node) node->roll(Ogre::Radian(delta * kDegreeInRadians), Ogre::Node::TS_LOCAL);
}

void MVNOgreSceneNodePlane::setZOrder(int zOrder) {
    this->zOrder = zOrder;
    if (node) node->detachObject(entityName);
    _createEntity(meshName, entityName, width, height, zOrder);
    if (node) {
        // The position keeps its old z: only the plane moves.
        node->setPosition(position[0], position[1], position[2]);
        _attachEntity();
    }
}

}  // namespace Morvane
