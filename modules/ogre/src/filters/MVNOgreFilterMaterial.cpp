#include "filters/MVNOgreFilterMaterial.h"

#include <Ogre.h>

#include <cmath>

#include "core/MVNGeneratorStringId.h"
#include "core/MVNLog.h"
#include "engine/MVNOgreManager.h"
#include "filters/MVNOgreFilterPass.h"
#include "scene/MVNOgreMaterialFilter.h"
#include "scene/MVNOgreSceneNodePlane.h"

namespace Morvane {

namespace {
const char* const kTag = "MVNOgreFilterMaterial";
const char* const kSharedScene = "MorvaneScene";

// A side of the quad in world units, as the texture nodes size theirs, so
// that a filtered clip covers exactly the pixels of an unfiltered one.
float quadSide(float side, float scale) { return side * scale; }
}  // namespace

MVNOgreFilterMaterial::MVNOgreFilterMaterial(const std::string& materialName, int width, int height, int zOrder,
                                             std::string textureName, int animation, const std::string& sceneName)
    : mMaterialName(materialName),
      mSceneName(sceneName.empty() ? kSharedScene : sceneName),
      mTextureName(std::move(textureName)),
      mZOrder(zOrder),
      mWidth(width),
      mHeight(height),
      mId(MVNGeneratorStringId::getSingleton()->genStringId("FilterMaterial")),
      mAnimation(animation) {}

MVNOgreFilterMaterial::~MVNOgreFilterMaterial() {
    if (mNode || mMaterial || mFirstPass) release();
}

// The perspective correction: a quad nearer the camera must be smaller by
// this ratio to cover the same pixels.
float MVNOgreFilterMaterial::_scale() const {
    return MVNOgreSceneNodePlane::depthRatio(mZOrder, MVNOgreManager::getSingleton()->getCameraDistance());
}

int MVNOgreFilterMaterial::init() {
    MVNOgreManager::getSingleton()->callRenderableWait([this]() { _init(); }, "filterInit");
    if (mNode == nullptr) {
        log_error(kTag, "init failed");
        return -1;
    }
    return 0;
}

void MVNOgreFilterMaterial::_init() {
    mSize[0] = static_cast<float>(mWidth);
    mSize[1] = static_cast<float>(mHeight);
    std::string texture = _buildFirstPass(mWidth, mHeight, mTextureName);
    mMaterial = new MVNOgreMaterialFilter(mMaterialName, mWidth, mHeight, texture);
    if (!mMaterial->getMaterial()) {
        log_error(kTag, "MaterialImpl create error");
        delete mMaterial;
        mMaterial = nullptr;
        _releaseFirstPass();
        return;
    }
    float scale = _scale();
    mNode = new MVNOgreSceneNodePlane(mSceneName, mMaterial->getMaterial(), quadSide(mSize[0], scale),
                                      quadSide(mSize[1], scale), mZOrder,
                                      Ogre::Vector3(0, 0, static_cast<float>(mZOrder)));
    mNode->setAnimation(mAnimation);
    mNode->setRotation(mRotation);
}

void MVNOgreFilterMaterial::release() {
    MVNOgreManager::getSingleton()->callRenderableWait([this]() { _release(); }, "filterRelease");
}

void MVNOgreFilterMaterial::_release() {
    // The quad goes before the material it is drawn with.
    delete mNode;
    mNode = nullptr;
    delete mMaterial;
    mMaterial = nullptr;
    _releaseFirstPass();
}

void MVNOgreFilterMaterial::render(int position) {
    // The quad itself is drawn with the scene; a first pass must be drawn
    // before that, from this frame's picture.
    if (mFirstPass == nullptr) return;
    MVNOgreManager::getSingleton()->callRenderableWait(
        [this]() {
            if (mFirstPass) mFirstPass->draw();
        },
        "filterPassRender");
}

void MVNOgreFilterMaterial::updateTexture(unsigned char* data, int width, int height) {
    MVNOgreManager::getSingleton()->callRenderableWait(
        [&]() {
            if (mFirstPass) {
                mFirstPass->updateTexture(data, width, height);
            } else if (mMaterial) {
                mMaterial->updateTexture(data, width, height);
            }
        },
        "filterUpdateTexture");
}

void MVNOgreFilterMaterial::setGeometry(const MVNRect& rect) {
    MVNOgreManager::getSingleton()->callRenderableWait([&]() { _setGeometry(rect); }, "fitlerSetGeo");
}

void MVNOgreFilterMaterial::_setGeometry(const MVNRect& rect) {
    mGeometry = rect;
    if (mNode == nullptr) return;
    MVNRect world = MVNOgreManager::getSingleton()->adjustGeometryProfileToWorld(rect);
    MVNPoint centre = world.center();
    float scale = _scale();
    float x = centre.x * scale;
    float y = centre.y * scale;
    float z = static_cast<float>(mZOrder);
    if (world.width == mSize[0] && world.height == mSize[1]) {
        mNode->setPosition(x, y, z);
        return;
    }
    mSize[0] = world.width;
    mSize[1] = world.height;
    _resize(world.width, world.height, x, y, z);
}

void MVNOgreFilterMaterial::_resize(float width, float height, float x, float y, float z) {
    float scale = _scale();
    delete mNode;
    mNode = new MVNOgreSceneNodePlane(mSceneName, mMaterial->getMaterial(), quadSide(width, scale),
                                      quadSide(height, scale), mZOrder, Ogre::Vector3(x, y, z));
    // A new quad starts unturned and unanimated.
    mNode->setAnimation(mAnimation);
    mNode->setRotation(mRotation);
}

void MVNOgreFilterMaterial::setVisible(bool visible) {
    // Every frame asks for visibility: only a change costs a hop.
    if (mVisible == static_cast<int>(visible)) return;
    mVisible = visible;
    MVNOgreManager::getSingleton()->callRenderableWait(
        [&]() {
            if (mNode) mNode->setVisible(visible);
        },
        "filterSetVisible");
}

void MVNOgreFilterMaterial::updateAnimation(int position) {
    MVNOgreManager::getSingleton()->callRenderableWait(
        [&]() {
            if (mNode) mNode->updateAnimation(position);
        },
        "filterUpdateAnimation");
}

void MVNOgreFilterMaterial::setAnimation(int animation) {
    MVNOgreManager::getSingleton()->callRenderableWait(
        [&]() {
            mAnimation = animation;
            if (mNode) mNode->setAnimation(animation);
        },
        "filterSetAnimation");
}

void MVNOgreFilterMaterial::setSceneBlending(int source, int destination) {
    MVNOgreManager::getSingleton()->callRenderableWait(
        [&]() { _setSceneBlendingOn(mMaterial, source, destination); }, "filterSetSceneBlending");
}

void MVNOgreFilterMaterial::addExtraTexture(const std::string& name, unsigned char* data, int width, int height,
                                            int type) {
    MVNOgreManager::getSingleton()->callRenderableWait(
        [&]() { _addExtraTextureTo(mMaterial, name, data, width, height, type); }, "filterAddExtraTexture");
}

void MVNOgreFilterMaterial::setUniformFloat(const std::string& name, float value) {
    _setUniformOn(mMaterial, name, value);
    if (mFirstPass) mFirstPass->setUniformFloat(name, value);
}

void MVNOgreFilterMaterial::setRotation(int rotation) {
    MVNOgreManager::getSingleton()->callRenderableWait(
        [&]() {
            mRotation = rotation;
            if (mNode) mNode->setRotation(rotation);
        },
        "filterSetRotation");
}

void MVNOgreFilterMaterial::setZOrder(int zOrder) {
    MVNOgreManager::getSingleton()->callRenderableWait(
        [&]() {
            mZOrder = zOrder;
            if (mNode) mNode->setZOrder(zOrder);
        },
        "filterSetZOrder");
}

}  // namespace Morvane
