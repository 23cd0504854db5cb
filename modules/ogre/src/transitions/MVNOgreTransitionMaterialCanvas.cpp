#include "transitions/MVNOgreTransitionMaterialCanvas.h"

#include <Ogre.h>

#include <algorithm>

#include "core/MVNLog.h"
#include "engine/MVNOgreManager.h"
#include "scene/MVNOgreMaterialTransition.h"
#include "scene/MVNOgreSceneNodePlane.h"
#include "transitions/TextureConvert.h"

namespace Morvane {

namespace {
const char* const kTag = "MVNOgreTransitionMaterialCanvas";
const char* const kSharedScene = "MorvaneScene";

float depthRatio(int zOrder) {
    return MVNOgreSceneNodePlane::depthRatio(zOrder, MVNOgreManager::getSingleton()->getCameraDistance());
}

void onRenderThread(std::function<void()> call, const char* name) {
    MVNOgreManager::getSingleton()->callRenderableWait(std::move(call), name);
}
}  // namespace

MVNOgreTransitionMaterialCanvas::MVNOgreTransitionMaterialCanvas(
    const std::string& resource, int widthA, int heightA, int widthB, int heightB, int zOrder,
    const std::string& textureNameA, const std::string& textureNameB, int animationA, int animationB,
    const std::string& sceneName)
    : resource(resource),
      widthA(widthA),
      heightA(heightA),
      widthB(widthB),
      heightB(heightB),
      textureNameA(textureNameA),
      textureNameB(textureNameB),
      zOrder(zOrder),
      animationA(animationA),
      animationB(animationB),
      sceneName(sceneName) {}

MVNOgreTransitionMaterialCanvas::~MVNOgreTransitionMaterialCanvas() {
    if (sceneNode || material || convertA || convertB) release();
}

int MVNOgreTransitionMaterialCanvas::init() {
    int rc = -1;
    onRenderThread([&]() { rc = _init(); }, "transInit");
    if (sceneNode == nullptr) {
        log_error(kTag, "MVNOgreTransitionMaterial init failed");
        return -1;
    }
    return rc == -1 ? -1 : 0;
}

int MVNOgreTransitionMaterialCanvas::_init() {
    MVNOgreManager* manager = MVNOgreManager::getSingleton();
    windowWidth = manager->getRenderWindowWidth();
    windowHeight = manager->getRenderWindowHeight();
    size = MVNSize(static_cast<float>(windowWidth), static_cast<float>(windowHeight));
    convertA = new TextureConvert(widthA, heightA, windowWidth, windowHeight, zOrder, textureNameA, animationA);
    convertB = new TextureConvert(widthB, heightB, windowWidth, windowHeight, zOrder, textureNameB, animationB);
    convertA->setRotation(rotationA);
    convertB->setRotation(rotationB);
    if (_config() == -1) {
        log_error(kTag, "config transition node error");
        return -1;
    }
    return 0;
}

int MVNOgreTransitionMaterialCanvas::_config() {
    std::string nameA = convertA ? convertA->getRttName() : textureNameA;
    std::string nameB = convertB ? convertB->getRttName() : textureNameB;
    material = new MVNOgreMaterialTransition(resource, windowWidth, windowHeight, windowWidth, windowHeight, nameA,
                                             nameB);
    if (!material->getMaterial()) {
        log_error(kTag, "MaterialImpl create error");
        delete material;
        material = nullptr;
        return -1;
    }
    float ratio = depthRatio(zOrder);
    sceneNode = new MVNOgreSceneNodePlane(sceneName.empty() ? kSharedScene : sceneName, material->getMaterial(),
                                          windowWidth * ratio, windowHeight * ratio, zOrder,
                                          Ogre::Vector3(0, 0, static_cast<float>(zOrder)));
    // A rebuilt quad shows as the last one did.
    if (visible != -1) sceneNode->setVisible(visible == 1);
    _applyClipRect();
    return 0;
}

MVNRect MVNOgreTransitionMaterialCanvas::clipRect() const {
    MVNOgreManager* manager = MVNOgreManager::getSingleton();
    float frameW = static_cast<float>(windowWidth), frameH = static_cast<float>(windowHeight);
    bool any = false;
    float left = 0, bottom = 0, right = 0, top = 0;
    for (const MVNRect* rect : {&geometryA, &geometryB}) {
        if (rect->isEmpty() || rect->width <= 0 || rect->height <= 0) continue;
        // Profile to window pixels, both counted from the bottom left.
        MVNRect r = manager->adjustGeometryProfileToScreen(*rect);
        left = any ? std::min(left, r.getMinX()) : r.getMinX();
        bottom = any ? std::min(bottom, r.getMinY()) : r.getMinY();
        right = any ? std::max(right, r.getMaxX()) : r.getMaxX();
        top = any ? std::max(top, r.getMaxY()) : r.getMaxY();
        any = true;
    }
    if (!any || frameW <= 0 || frameH <= 0) return MVNRect(0, 0, 1, 1);
    left = std::max(left, 0.0f), bottom = std::max(bottom, 0.0f);
    right = std::min(right, frameW), top = std::min(top, frameH);
    if (right <= left || top <= bottom) return MVNRect(0, 0, 1, 1);
    return MVNRect(left / frameW, (frameH - top) / frameH, (right - left) / frameW, (top - bottom) / frameH);
}

// The programs read "clipRect" to centre their shapes on the clips; it is
// set again whenever a clip moves or the material is rebuilt.
void MVNOgreTransitionMaterialCanvas::_applyClipRect() {
    if (material == nullptr) return;
    MVNRect r = clipRect();
    material->setUniformFloat4("clipRect", r.x, r.y, r.width, r.height);
    float height = r.height * static_cast<float>(windowHeight);
    if (height > 0) material->setUniformFloat("ratio", r.width * static_cast<float>(windowWidth) / height);
}

void MVNOgreTransitionMaterialCanvas::release() {
    onRenderThread([this]() { _release(); }, "transRelease");
}

void MVNOgreTransitionMaterialCanvas::_release() {
    delete sceneNode;
    sceneNode = nullptr;
    delete material;
    material = nullptr;
    delete convertA;
    convertA = nullptr;
    delete convertB;
    convertB = nullptr;
}

void MVNOgreTransitionMaterialCanvas::process(float progress) {
    this->progress = progress;
    onRenderThread(
        [this, progress]() {
            if (material) material->process(progress);
        },
        "transProgress");
}

void MVNOgreTransitionMaterialCanvas::updateTextureA(uint8_t* data, int width, int height) {
    if (convertA == nullptr) return;
    onRenderThread([&]() { convertA->updateTexture(data, width, height); }, "transpUpdateTextureA");
}

void MVNOgreTransitionMaterialCanvas::updateTextureB(uint8_t* data, int width, int height) {
    if (convertB == nullptr) return;
    onRenderThread([&]() { convertB->updateTexture(data, width, height); }, "transUpdateTextureB");
}

void MVNOgreTransitionMaterialCanvas::setGeometry(const MVNRect& rect) {
    geometry = rect;
    onRenderThread([this, rect]() { _setGeometry(rect); }, "transSetGeo");
}

void MVNOgreTransitionMaterialCanvas::_setGeometry(const MVNRect& rect) {
    if (sceneNode == nullptr) return;
    MVNRect world = MVNOgreManager::getSingleton()->adjustGeometryProfileToWorld(rect);
    MVNPoint center = world.center();
    float ratio = depthRatio(zOrder);
    float x = center.x * ratio, y = center.y * ratio, z = static_cast<float>(zOrder);
    MVNSize wanted(world.width, world.height);
    if (size.equals(wanted)) {
        sceneNode->setPosition(x, y, z);
        return;
    }
    size = wanted;
    _resize(world.width, world.height, x, y, z);
}

void MVNOgreTransitionMaterialCanvas::_resize(float width, float height, float x, float y, float z) {
    delete sceneNode;
    sceneNode = nullptr;
    if (material == nullptr) return;
    float ratio = depthRatio(zOrder);
    sceneNode = new MVNOgreSceneNodePlane(kSharedScene, material->getMaterial(), width * ratio, height * ratio, zOrder,
                                          Ogre::Vector3(x, y, z));
    if (visible != -1) sceneNode->setVisible(visible == 1);
}

void MVNOgreTransitionMaterialCanvas::setGeometryA(const MVNRect& rect) {
    geometryA = rect;
    if (convertA) onRenderThread([this, rect]() {
            convertA->setGeometry(rect);
            _applyClipRect();
        }, "transSetGeoA");
}

void MVNOgreTransitionMaterialCanvas::setGeometryB(const MVNRect& rect) {
    geometryB = rect;
    if (convertB) onRenderThread([this, rect]() {
            convertB->setGeometry(rect);
            _applyClipRect();
        }, "transSetGeoB");
}

void MVNOgreTransitionMaterialCanvas::setResource(const std::string& name) {
    if (name == resource) return;
    resource = name;
    onRenderThread(
        [this]() {
            delete sceneNode;
            sceneNode = nullptr;
            delete material;
            material = nullptr;
            _config();
        },
        "transSetResource");
}

// The engine's nodes are touched on the render thread only; a visibility
// that doesn't change costs no step.
void MVNOgreTransitionMaterialCanvas::setVisible(bool visible) {
    if (this->visible == static_cast<int>(visible)) return;
    this->visible = visible;
    onRenderThread(
        [this, visible]() {
            if (sceneNode) sceneNode->setVisible(visible);
        },
        "transSetVisible");
}

void MVNOgreTransitionMaterialCanvas::render(int position) {
    if (convertA == nullptr && convertB == nullptr) return;
    onRenderThread(
        [this]() {
            _renderInput(convertA, 0);
            _renderInput(convertB, 1);
        },
        "transRender");
}

// A clip that fills the frame as it is (the usual full-frame picture) is
// sampled where it lies: its converter pass would copy it unchanged at the
// cost of one full-frame draw. Checked each frame, as geometry, rotation,
// animation and opacity may all change while the transition runs.
void MVNOgreTransitionMaterialCanvas::_renderInput(TextureConvert* convert, int unit) {
    if (convert == nullptr) return;
    bool direct = convert->passesUnchanged();
    if (!direct) convert->render();
    if (material) material->setInputTexture(unit, direct ? convert->sourceName() : convert->getRttName());
}

void MVNOgreTransitionMaterialCanvas::setAnimationA(int type) {
    animationA = type;
    if (convertA) onRenderThread([this, type]() { convertA->setAnimation(type); }, "transSetAnimationA");
}

void MVNOgreTransitionMaterialCanvas::setAnimationB(int type) {
    animationB = type;
    if (convertB) onRenderThread([this, type]() { convertB->setAnimation(type); }, "transSetAnimationB");
}

void MVNOgreTransitionMaterialCanvas::updateAnimationA(int position) {
    if (convertA) onRenderThread([this, position]() { convertA->updateAnimation(position); }, "transUpdateAnimationA");
}

void MVNOgreTransitionMaterialCanvas::updateAnimationB(int position) {
    if (convertB) onRenderThread([this, position]() { convertB->updateAnimation(position); }, "transUpdateAnimationB");
}

void* MVNOgreTransitionMaterialCanvas::getAnimationObjectA() {
    return convertA ? convertA->getAnimationObject() : nullptr;
}

void* MVNOgreTransitionMaterialCanvas::getAnimationObjectB() {
    return convertB ? convertB->getAnimationObject() : nullptr;
}

void MVNOgreTransitionMaterialCanvas::setRotationA(int degrees) {
    rotationA = degrees;
    if (convertA) onRenderThread([this, degrees]() { convertA->setRotation(degrees); }, "transSetRotationA");
}

void MVNOgreTransitionMaterialCanvas::setRotationB(int degrees) {
    rotationB = degrees;
    if (convertB) onRenderThread([this, degrees]() { convertB->setRotation(degrees); }, "transSetRotationB");
}

void MVNOgreTransitionMaterialCanvas::setUniformFloat(const std::string& name, float value) {
    onRenderThread(
        [&]() {
            if (material) material->setUniformFloat(name, value);
        },
        "transSetUniformFloat");
}

}  // namespace Morvane
