#include "filters/MVNOgreFilterScene.h"

#include <Ogre.h>

#include <atomic>
#include <cmath>

#include "core/MVNGeneratorStringId.h"
#include "core/MVNLog.h"
#include "engine/MVNOgreContextBase.h"
#include "engine/MVNOgreManager.h"
#include "filters/MVNOgreFilterPass.h"
#include "scene/MVNOgreMaterialFilter.h"
#include "scene/MVNOgreSceneManager.h"
#include "scene/MVNOgreSceneNodePlane.h"
#include "scene/MVNOgreTextureNodePlane.h"
#include "scene/MVNOgreTextureNodeThread.h"

namespace Morvane {

namespace {
const char* const kTag = "MVNOgreFilterScene";

// The private camera always stands this far from the picture plane.
const float kCameraDistance = 10000.0f;
}  // namespace

MVNOgreFilterScene::MVNOgreFilterScene(const std::string& materialName, int width, int height, int zOrder,
                                       const std::string& textureName, bool showNode, const std::string& rttName,
                                       int animation, const std::string& groupName)
    : mMaterialName(materialName),
      mRttName(rttName),
      mTextureName(textureName),
      mZOrder(zOrder),
      mWidth(width),
      mHeight(height),
      mShowNode(showNode),
      mId(MVNGeneratorStringId::getSingleton()->genStringId("FilterScene")),
      mAnimation(animation),
      mGroupName(groupName) {}

MVNOgreFilterScene::~MVNOgreFilterScene() {
    if (mTextureNode || mNode || mMaterial || mSceneManager || mFirstPass) release();
}

int MVNOgreFilterScene::init() {
    MVNOgreManager::getSingleton()->callRenderableWait([this]() { _init(); }, "filterSceneInit");
    if (!mShowNode) return 0;
    const MVNProfile& profile = MVNOgreManager::getSingleton()->getProfile();
    if (mGroupName.empty()) {
        mTextureNode = new MVNOgreTextureNodeThread<MVNOgreTextureNodePlane>(
            mRttName, mWidth, mHeight, profile.width(), profile.height(), mZOrder, std::string());
    } else {
        mTextureNode = new MVNOgreTextureNodeThread<MVNOgreTextureNodePlane>(
            mRttName, mWidth, mHeight, profile.width(), profile.height(), mZOrder, std::string(), mGroupName);
    }
    mTextureNode->setAnimation(mAnimation);
    mTextureNode->setRotation(mRotation);
    return 0;
}

void MVNOgreFilterScene::_init() {
    mSceneManager = new MVNOgreSceneManager(mWidth, mHeight, mRttName, "");
    MVNOgreContextBase::resyncCurrentRenderTarget();
    std::string texture = _buildFirstPass(mWidth, mHeight, mTextureName);
    mMaterial = new MVNOgreMaterialFilter(mMaterialName, mWidth, mHeight, texture);
    if (!mMaterial->getMaterial()) {
        log_debug(kTag, "MaterialImpl create error");
        delete mMaterial;
        mMaterial = nullptr;
        _releaseFirstPass();
        return;
    }
    float scale = MVNOgreSceneNodePlane::depthRatio(mZOrder, kCameraDistance);
    mNode = new MVNOgreSceneNodePlane(mSceneManager->getSceneName(), mMaterial->getMaterial(), mWidth * scale,
                                      mHeight * scale, mZOrder,
                                      Ogre::Vector3(0, 0, static_cast<float>(mZOrder)));
}

void MVNOgreFilterScene::release() {
    delete mTextureNode;
    mTextureNode = nullptr;
    MVNOgreManager::getSingleton()->callRenderableWait([this]() { _release(); }, "filterSceneRelease");
}

void MVNOgreFilterScene::_release() {
    // Quad, material, then the scene they live in.
    delete mNode;
    mNode = nullptr;
    delete mMaterial;
    mMaterial = nullptr;
    _releaseFirstPass();
    if (mSceneManager) {
        delete mSceneManager;
        mSceneManager = nullptr;
        MVNOgreContextBase::resyncCurrentRenderTarget();
    }
}

void MVNOgreFilterScene::render(int position) {
    MVNOgreManager::getSingleton()->callRenderableWait(
        [this]() {
            if (mFirstPass) mFirstPass->draw();
            if (mSceneManager && mSceneManager->getRenderTarget()) mSceneManager->getRenderTarget()->update(true);
        },
        "filterSceneRender");
}

void MVNOgreFilterScene::updateTexture(unsigned char* data, int width, int height) {
    MVNOgreManager::getSingleton()->callRenderableWait(
        [&]() {
            if (mFirstPass) {
                mFirstPass->updateTexture(data, width, height);
            } else if (mMaterial) {
                mMaterial->updateTexture(data, width, height);
            }
        },
        "filterSceneUpdateTexture");
}

void MVNOgreFilterScene::setGeometry(const MVNRect& rect) {
    if (mTextureNode) mTextureNode->setGeometry(rect);
}

void MVNOgreFilterScene::setVisible(bool visible) {
    if (mVisible == static_cast<int>(visible)) return;
    mVisible = visible;
    MVNOgreManager::getSingleton()->callRenderableWait(
        [&]() {
            if (mNode) mNode->setVisible(visible);
        },
        "filterSceneSetVisible");
    if (mTextureNode) mTextureNode->setVisible(visible);
}

void MVNOgreFilterScene::updateAnimation(int position) {
    if (mTextureNode) mTextureNode->updateAnimation(position);
}

void MVNOgreFilterScene::setAnimation(int animation) {
    mAnimation = animation;
    if (mTextureNode) mTextureNode->setAnimation(animation);
}

void MVNOgreFilterScene::setSceneBlending(int source, int destination) {
    MVNOgreManager::getSingleton()->callRenderableWait(
        [&]() { _setSceneBlendingOn(mMaterial, source, destination); }, "filterSceneSetBlending");
}

void MVNOgreFilterScene::addExtraTexture(const std::string& name, unsigned char* data, int width, int height,
                                         int type) {
    MVNOgreManager::getSingleton()->callRenderableWait(
        [&]() { _addExtraTextureTo(mMaterial, name, data, width, height, type); }, "filterAddExtraTexture");
}

void MVNOgreFilterScene::dump() {
    MVNOgreManager::getSingleton()->callRenderableWait(
        [this]() {
            static std::atomic<int> calls{0};
            int count = ++calls;
            if (count != 5 || mSceneManager == nullptr || mSceneManager->getRenderTarget() == nullptr) return;
            mSceneManager->getRenderTarget()->writeContentsToFile("xxyy" + std::to_string(count) + ".png");
        },
        "writeToFile");
}

void MVNOgreFilterScene::setUniformFloat(const std::string& name, float value) {
    _setUniformOn(mMaterial, name, value);
    if (mFirstPass) mFirstPass->setUniformFloat(name, value);
}

void MVNOgreFilterScene::setRotation(int rotation) {
    mRotation = rotation;
    if (mTextureNode) mTextureNode->setRotation(rotation);
}

void MVNOgreFilterScene::setZOrder(int zOrder) {
    mZOrder = zOrder;
    if (mTextureNode) mTextureNode->setZOrder(zOrder);
}

}  // namespace Morvane
