#include "transitions/TextureConvert.h"

#include <Ogre.h>

#include <cmath>

#include "core/MVNGeneratorStringId.h"
#include "core/MVNLog.h"
#include "engine/MVNOgreContextBase.h"
#include "engine/MVNOgreManager.h"
#include "scene/MVNOgreMaterialNormal.h"
#include "scene/MVNOgreSceneManager.h"
#include "scene/MVNOgreSceneNodePlane.h"

namespace Morvane {

namespace {
const char* const kTag = "TextureConvert";
const float kCameraDistance = 10000.0f;
}  // namespace

TextureConvert::TextureConvert(int clipWidth, int clipHeight, int rttWidth, int rttHeight, int zOrder,
                               const std::string& inputName, int animation)
    : width(clipWidth), height(clipHeight), rttWidth(rttWidth), rttHeight(rttHeight), animation(animation) {
    rttName = MVNGeneratorStringId::getSingleton()->genStringId("ConvertRtt");
    sceneManager = new MVNOgreSceneManager(rttWidth, rttHeight, rttName, "");
    // Drawn by render() alone, once a frame while the transition runs; the
    // engine's own round of all targets would draw it a second time, and
    // draw it while no transition shows.
    if (sceneManager->getRenderTarget()) sceneManager->getRenderTarget()->setAutoUpdated(false);
    MVNOgreContextBase::resyncCurrentRenderTarget();
    log_debug(kTag, "inputRTTName:%s", inputName.c_str());
    material = new MVNOgreMaterialNormal(clipWidth, clipHeight, inputName, false);
    if (!material->getMaterial()) {
        log_debug(kTag, "MaterialImpl create error");
        delete material;
        material = nullptr;
        return;
    }
    size = MVNSize(static_cast<float>(clipWidth), static_cast<float>(clipHeight));
    float ratio = (kCameraDistance - 0) / kCameraDistance;
    sceneNode = new MVNOgreSceneNodePlane(sceneManager->getSceneName(), material->getMaterial(),
                                          static_cast<int>(clipWidth * ratio), static_cast<int>(clipHeight * ratio),
                                          0, Ogre::Vector3(0, 0, 0));
    sceneNode->setAnimation(animation);
}

TextureConvert::~TextureConvert() {
    delete sceneNode;
    sceneNode = nullptr;
    delete material;
    material = nullptr;
    delete sceneManager;
    sceneManager = nullptr;
    MVNOgreContextBase::resyncCurrentRenderTarget();
}

void TextureConvert::setGeometry(const MVNRect& rect) {
    if (sceneNode == nullptr) return;
    MVNOgreManager* manager = MVNOgreManager::getSingleton();
    float distance = manager->getCameraDistance();
    float ratio = distance > 0 ? (distance - zOrder) / distance : 1.0f;
    MVNRect world = manager->adjustGeometryProfileToWorld(rect);
    MVNPoint center = world.center();
    float x = center.x * ratio, y = center.y * ratio, z = static_cast<float>(zOrder);
    MVNSize wanted(world.width, world.height);
    centre = MVNPoint(x, y);
    if (size.equals(wanted)) {
        sceneNode->setPosition(x, y, z);
        return;
    }
    size = wanted;
    _resize(static_cast<int>(world.width), static_cast<int>(world.height), x, y, z);
}

void TextureConvert::_resize(int width, int height, float x, float y, float z) {
    log_debug(kTag, "_resize %dx%d", width, height);
    delete sceneNode;
    sceneNode = new MVNOgreSceneNodePlane(sceneManager->getSceneName(), material->getMaterial(), width, height, zOrder,
                                          Ogre::Vector3(x, y, z));
    sceneNode->setAnimation(animation);
    sceneNode->setRotation(rotation);
}

void TextureConvert::updateTexture(uint8_t* data, int width, int height) {
    if (material) material->updateTexture(data, width, height);
}

void TextureConvert::render() {
    if (sceneManager && sceneManager->getRenderTarget()) sceneManager->getRenderTarget()->update(true);
}

void TextureConvert::setRotation(int degrees) {
    rotation = degrees;
    if (sceneNode) sceneNode->setRotation(degrees);
}

void TextureConvert::setAnimation(int type) {
    animation = type;
    if (sceneNode) sceneNode->setAnimation(type);
}

void TextureConvert::updateAnimation(int position) {
    if (sceneNode) sceneNode->updateAnimation(position);
}

std::string TextureConvert::sourceName() const {
    auto* normal = dynamic_cast<MVNOgreMaterialNormal*>(material);
    return normal ? normal->getTextureName() : std::string();
}

bool TextureConvert::passesUnchanged() const {
    auto* normal = dynamic_cast<MVNOgreMaterialNormal*>(material);
    if (normal == nullptr || !normal->isOpaque() || rotation != 0 || animation != 0) return false;
    if (std::fabs(size.width - rttWidth) > 0.5f || std::fabs(size.height - rttHeight) > 0.5f) return false;
    if (std::fabs(centre.x) > 0.25f || std::fabs(centre.y) > 0.25f) return false;
    // Same size as the render texture: sampled 1:1, no filtering stands
    // between the two ways.
    Ogre::TexturePtr texture = Ogre::TextureManager::getSingleton().getByName(normal->getTextureName(), Ogre::RGN_DEFAULT);
    return texture && static_cast<int>(texture->getWidth()) == rttWidth &&
           static_cast<int>(texture->getHeight()) == rttHeight;
}

void* TextureConvert::getAnimationObject() { return sceneNode ? sceneNode->getAnimationObject() : nullptr; }

}  // namespace Morvane
