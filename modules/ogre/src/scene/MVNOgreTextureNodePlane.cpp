#include "scene/MVNOgreTextureNodePlane.h"

#include <Ogre.h>

#include <cmath>


#include "core/MVNLog.h"
#include "engine/MVNOgreManager.h"
#include "scene/MVNOgreMaterialFilter.h"
#include "scene/MVNOgreMaterialNormal.h"
#include "scene/MVNOgreSceneNodePlane.h"

namespace Morvane {

namespace {
const char* const kTag = "MVNOgreTextureNodePlane";
const char* const kSharedScene = "MorvaneScene";
// Where the camera stands when the quad is first built; later placements ask
// the manager for the real distance.
const float kInitialCameraDistance = 10000.0f;

// The ratio of a quad of zOrder seen by the scene's camera as it stands now.
float perspectiveRatio(int zOrder) {
    return MVNOgreSceneNodePlane::depthRatio(zOrder, MVNOgreManager::getSingleton()->getCameraDistance());
}
}  // namespace

MVNOgreTextureNodePlane::MVNOgreTextureNodePlane(const std::string& textureName, int width, int height,
                                                 int canvasWidth, int canvasHeight, int zOrder,
                                                 const std::string& materialName)
    : width(width), height(height), zOrder(zOrder) {
    _build(textureName, materialName);
}

MVNOgreTextureNodePlane::MVNOgreTextureNodePlane(const std::string& textureName, int width, int height,
                                                 int canvasWidth, int canvasHeight, int zOrder,
                                                 const std::string& materialName, const std::string& sceneName)
    : width(width), height(height), zOrder(zOrder), sceneName(sceneName) {
    _build(textureName, materialName);
}

void MVNOgreTextureNodePlane::_build(const std::string& textureName, const std::string& materialName) {
    Ogre::Root* root = Ogre::Root::getSingletonPtr();
    std::string scene = _sceneName();
    if (root == nullptr || !root->hasSceneManager(scene)) {
        log_error(kTag, "scene %s not found", scene.c_str());
        return;
    }
    if (materialName.empty()) {
        material = new MVNOgreMaterialNormal(width, height, textureName, false);
    } else {
        material = new MVNOgreMaterialFilter(materialName, width, height, textureName);
    }
    Ogre::MaterialPtr engineMaterial = material->getMaterial();
    if (!engineMaterial) {
        log_error(kTag, "MaterialImpl create error");
        delete material;
        material = nullptr;
        return;
    }
    size = MVNSize(static_cast<float>(width), static_cast<float>(height));
    // Centred on the axis until a geometry is given.
    corner = MVNPoint(-size.width / 2, -size.height / 2);
    // Sides as fractions of world units: a side rounded to whole units
    // would cover a fraction of a pixel more or less than the picture.
    float ratio = MVNOgreSceneNodePlane::depthRatio(zOrder, kInitialCameraDistance);
    Ogre::Vector3 position(0, 0, static_cast<float>(zOrder));
    sceneNode = new MVNOgreSceneNodePlane(scene, engineMaterial, width * ratio, height * ratio, zOrder, position);
}

MVNOgreTextureNodePlane::~MVNOgreTextureNodePlane() {
    // The quad goes before the material it is drawn with.
    delete sceneNode;
    sceneNode = nullptr;
    delete material;
    material = nullptr;
}

std::string MVNOgreTextureNodePlane::_sceneName() const { return sceneName.empty() ? kSharedScene : sceneName; }

void MVNOgreTextureNodePlane::updateTexture(uint8_t* data, int width, int height) {
    if (material) material->updateTexture(data, width, height);
}

void MVNOgreTextureNodePlane::setGeometry(const MVNRect& rect) {
    if (sceneNode == nullptr) return;
    MVNOgreManager* manager = MVNOgreManager::getSingleton();
    MVNRect world = manager->adjustGeometryProfileToWorld(rect);
    MVNPoint center = world.center();
    float ratio = perspectiveRatio(zOrder);
    float x = center.x * ratio;
    float y = center.y * ratio;
    float z = static_cast<float>(zOrder);
    MVNSize wanted(world.width, world.height);
    corner = MVNPoint(world.x, world.y);
    if (size.equals(wanted)) {
        // Every frame of a move takes this path: no mesh is built.
        sceneNode->setPosition(x, y, z);
        _chooseSampling();
        return;
    }
    size = wanted;
    _resize(world.width, world.height, x, y, z);
    _chooseSampling();
}

// A quad that shows its picture texel for pixel (unturned or turned by
// quarters, not animated, its own size, its edges on whole pixels) has
// every pixel centre on a texel centre: nearest sampling gives the bytes of
// bilinear there for less work. Anywhere else bilinear.
void MVNOgreTextureNodePlane::_chooseSampling() {
    auto* normal = dynamic_cast<MVNOgreMaterialNormal*>(material);
    if (normal == nullptr) return;
    bool nearest = false;
    int textureWidth = 0, textureHeight = 0;
    if (animation == 0 && rotation % 90 == 0 && normal->textureSize(textureWidth, textureHeight)) {
        bool across = rotation % 180 != 0;
        float shownWidth = across ? size.height : size.width;
        float shownHeight = across ? size.width : size.height;
        MVNOgreManager* manager = MVNOgreManager::getSingleton();
        // The corners in frame pixels, the world's origin at the frame's centre.
        float left = corner.x + (size.width - shownWidth) / 2 + manager->getRenderWindowWidth() / 2.0f;
        float bottom = corner.y + (size.height - shownHeight) / 2 + manager->getRenderWindowHeight() / 2.0f;
        auto whole = [](float v) { return std::fabs(v - std::round(v)) < 1.0f / 512; };
        nearest = size.width == static_cast<float>(textureWidth) && size.height == static_cast<float>(textureHeight) &&
                  whole(left) && whole(bottom);
    }
    normal->setNearest(nearest);
}

void MVNOgreTextureNodePlane::_resize(float width, float height, float x, float y, float z) {
    float ratio = perspectiveRatio(zOrder);
    delete sceneNode;
    sceneNode = nullptr;
    sceneNode = new MVNOgreSceneNodePlane(_sceneName(), material->getMaterial(), width * ratio, height * ratio, zOrder,
                                          Ogre::Vector3(x, y, z));
    // A new node starts unturned, so the stored rotation is applied in full.
    sceneNode->setAnimation(animation);
    sceneNode->setRotation(rotation);
}

void MVNOgreTextureNodePlane::setVisible(bool visible) {
    if (sceneNode) sceneNode->setVisible(visible);
}

void MVNOgreTextureNodePlane::updateAnimation(int position) {
    if (sceneNode) sceneNode->updateAnimation(position);
}

void MVNOgreTextureNodePlane::setAnimation(int type) {
    animation = type;
    if (sceneNode) sceneNode->setAnimation(type);
    _chooseSampling();
}

void MVNOgreTextureNodePlane::setRotation(int degrees) {
    rotation = degrees;
    if (sceneNode) sceneNode->setRotation(degrees);
    _chooseSampling();
}

void MVNOgreTextureNodePlane::setZOrder(int zOrder) {
    // Neither size nor position change: the new depth enters the ratio at
    // the next setGeometry.
    this->zOrder = zOrder;
    if (sceneNode) sceneNode->setZOrder(zOrder);
}

void MVNOgreTextureNodePlane::setUniformFloat(const std::string& name, float value, bool wait) {
    if (material == nullptr) return;
    try {
        material->setFragmentUniform(name, value);
    } catch (const std::exception&) {
        // A uniform the program doesn't have is no failure for the caller.
        log_debug(kTag, "setUniformFloat exception");
    }
}

void MVNOgreTextureNodePlane::setSceneBlending(int source, int destination) {
    if (material == nullptr) return;
    try {
        Ogre::MaterialPtr engineMaterial = material->getMaterial();
        if (!engineMaterial ||
            !Ogre::MaterialManager::getSingleton().resourceExists(engineMaterial->getName(), Ogre::RGN_DEFAULT)) {
            return;
        }
        // Every technique, not only the first: the shader generator draws
        // plain materials with a technique of its own, copied from the first
        // when the quad was first drawn.
        for (Ogre::Technique* technique : engineMaterial->getTechniques()) {
            if (technique->getNumPasses() == 0) continue;
            Ogre::Pass* pass = technique->getPass(0);
            pass->setDepthWriteEnabled(false);
            pass->setSceneBlending(static_cast<Ogre::SceneBlendFactor>(source),
                                   static_cast<Ogre::SceneBlendFactor>(destination));
        }
    } catch (const std::exception&) {
        log_debug(kTag, "setSceneBlending exception");
    }
}

}  // namespace Morvane
