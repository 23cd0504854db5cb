#include "scene/MVNOgreTextureNodeRect2d.h"

#include <Ogre.h>

#include "core/MVNLog.h"
#include "scene/MVNOgreMaterialNormal.h"
#include "scene/MVNOgreSceneNodeRect2d.h"

namespace Morvane {

namespace {
const char* const kTag = "MVNOgreTextureNodeRect2d";
const char* const kSharedScene = "MorvaneScene";
}  // namespace

MVNOgreTextureNodeRect2d::MVNOgreTextureNodeRect2d(const std::string& textureName, int width, int height,
                                                   int canvasWidth, int canvasHeight, int zOrder,
                                                   const std::string& materialName)
    : width(width), height(height), canvasWidth(canvasWidth), canvasHeight(canvasHeight) {
    _build(textureName);
}

MVNOgreTextureNodeRect2d::MVNOgreTextureNodeRect2d(const std::string& textureName, int width, int height,
                                                   int canvasWidth, int canvasHeight, int zOrder,
                                                   const std::string& materialName, const std::string& sceneName)
    : width(width), height(height), canvasWidth(canvasWidth), canvasHeight(canvasHeight) {
    _build(textureName);
}

void MVNOgreTextureNodeRect2d::_build(const std::string& textureName) {
    Ogre::Root* root = Ogre::Root::getSingletonPtr();
    if (root == nullptr || !root->hasSceneManager(kSharedScene)) {
        log_error(kTag, "scene %s not found", kSharedScene);
        return;
    }
    material = new MVNOgreMaterialNormal(width, height, textureName, false);
    Ogre::MaterialPtr engineMaterial = material->getMaterial();
    if (!engineMaterial) {
        log_error(kTag, "MaterialImpl create error");
        delete material;
        material = nullptr;
        return;
    }
    sceneNode = new MVNOgreSceneNodeRect2d(kSharedScene, engineMaterial, width, height);
}

MVNOgreTextureNodeRect2d::~MVNOgreTextureNodeRect2d() {
    delete sceneNode;
    sceneNode = nullptr;
    delete material;
    material = nullptr;
}

void MVNOgreTextureNodeRect2d::updateTexture(uint8_t* data, int width, int height) {
    if (material) material->updateTexture(data, width, height);
}

void MVNOgreTextureNodeRect2d::setGeometry(const MVNRect& rect) {
    if (sceneNode == nullptr) return;
    MVNRect rel = rect.absToRel(static_cast<float>(canvasWidth), static_cast<float>(canvasHeight));
    sceneNode->setCorners(rel.x, rel.y + rel.height, rel.x + rel.width, rel.y);
}

void MVNOgreTextureNodeRect2d::setVisible(bool visible) {
    if (sceneNode) sceneNode->setVisible(visible);
}

void MVNOgreTextureNodeRect2d::setUniformFloat(const std::string& name, float value, bool wait) {
    if (material == nullptr) return;
    try {
        material->setFragmentUniform(name, value);
    } catch (const std::exception&) {
        log_debug(kTag, "setUniformFloat exception");
    }
}

}  // namespace Morvane
