#include "transitions/MVNOgreTransitionMaterial.h"

#include <Ogre.h>

#include "core/MVNLog.h"
#include "engine/MVNOgreManager.h"
#include "scene/MVNOgreMaterialTransition.h"
#include "scene/MVNOgreSceneNodePlane.h"

namespace Morvane {

namespace {
const char* const kTag = "MVNOgreTransitionMaterial";

void onRenderThread(std::function<void()> call, const char* name) {
    MVNOgreManager::getSingleton()->callRenderableWait(std::move(call), name);
}
}  // namespace

MVNOgreTransitionMaterial::MVNOgreTransitionMaterial(const std::string& resource, int widthA, int heightA,
                                                     int widthB, int heightB, int zOrder,
                                                     const std::string& textureNameA,
                                                     const std::string& textureNameB)
    : resource(resource),
      widthA(widthA),
      heightA(heightA),
      widthB(widthB),
      heightB(heightB),
      textureNameA(textureNameA),
      textureNameB(textureNameB),
      zOrder(zOrder) {}

MVNOgreTransitionMaterial::~MVNOgreTransitionMaterial() {
    if (sceneNode || material) release();
}

int MVNOgreTransitionMaterial::init() {
    onRenderThread([this]() { _init(); }, "transInit");
    if (sceneNode == nullptr) {
        log_error(kTag, "MVNOgreTransitionMaterial init failed");
        return -1;
    }
    return 0;
}

int MVNOgreTransitionMaterial::_init() {
    log_debug(kTag, "_init...");
    size = MVNSize(static_cast<float>(widthA), static_cast<float>(heightA));
    material = new MVNOgreMaterialTransition(resource, widthA, heightA, widthB, heightB, textureNameA, textureNameB);
    if (!material->getMaterial()) {
        log_debug(kTag, "MaterialImpl create error");
        delete material;
        material = nullptr;
        return -1;
    }
    // Width of A and height of B: the two are meant to be of one size.
    float ratio = MVNOgreSceneNodePlane::depthRatio(zOrder, MVNOgreManager::getSingleton()->getCameraDistance());
    sceneNode = new MVNOgreSceneNodePlane("MorvaneScene", material->getMaterial(), widthA * ratio, heightB * ratio,
                                          zOrder, Ogre::Vector3(0, 0, static_cast<float>(zOrder)));
    log_debug(kTag, "_init done");
    return 0;
}

void MVNOgreTransitionMaterial::release() {
    onRenderThread([this]() { _release(); }, "transRelease");
}

void MVNOgreTransitionMaterial::_release() {
    delete sceneNode;
    sceneNode = nullptr;
    delete material;
    material = nullptr;
}

void MVNOgreTransitionMaterial::process(float progress) {
    this->progress = progress;
    onRenderThread(
        [this, progress]() {
            if (material) material->process(progress);
        },
        "transProgress");
}

void MVNOgreTransitionMaterial::updateTextureA(uint8_t* data, int width, int height) {
    onRenderThread(
        [&]() {
            if (material) material->updateTextureA(data, width, height);
        },
        "transpUpdateTextureA");
}

void MVNOgreTransitionMaterial::updateTextureB(uint8_t* data, int width, int height) {
    onRenderThread(
        [&]() {
            if (material) material->updateTextureB(data, width, height);
        },
        "transUpdateTextureB");
}

void MVNOgreTransitionMaterial::setGeometry(const MVNRect& rect) {
    geometry = rect;
    onRenderThread([this, rect]() { _setGeometry(rect); }, "transSetGeo");
}

void MVNOgreTransitionMaterial::_setGeometry(const MVNRect& rect) {
    if (sceneNode == nullptr || material == nullptr) return;
    MVNOgreManager* manager = MVNOgreManager::getSingleton();
    float ratio = MVNOgreSceneNodePlane::depthRatio(zOrder, manager->getCameraDistance());
    MVNRect world = manager->adjustGeometryProfileToWorld(rect);
    MVNPoint center = world.center();
    float x = center.x * ratio, y = center.y * ratio, z = static_cast<float>(zOrder);
    MVNSize wanted(world.width, world.height);
    if (size.equals(wanted)) {
        sceneNode->setPosition(x, y, z);
        return;
    }
    size = wanted;
    delete sceneNode;
    sceneNode = new MVNOgreSceneNodePlane("MorvaneScene", material->getMaterial(), world.width * ratio,
                                          world.height * ratio, zOrder, Ogre::Vector3(x, y, z));
}

void MVNOgreTransitionMaterial::setVisible(bool visible) {
    onRenderThread(
        [this, visible]() {
            if (sceneNode) sceneNode->setVisible(visible);
        },
        "transSetVisible");
}

void MVNOgreTransitionMaterial::setUniformFloat(const std::string& name, float value) {
    onRenderThread(
        [&]() {
            if (material) material->setUniformFloat(name, value);
        },
        "transSetUniformFloat");
}

}  // namespace Morvane
