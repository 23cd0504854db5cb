#include "filters/MVNFilterSample2.h"

#include <Ogre.h>

#include <cstring>

#include "core/AutoLock.h"
#include "core/MVNByteBuffer.h"
#include "core/MVNByteBufferPool.h"
#include "core/MVNFrame.h"
#include "core/MVNGeneratorStringId.h"
#include "core/MVNLog.h"
#include "core/MVNPixelUtils.h"
#include "core/MVNUtils.h"
#include "engine/MVNOgreContextBase.h"
#include "engine/MVNOgreManager.h"
#include "scene/MVNOgreSceneManager.h"
#include "scene/MVNOgreTextureNodePlane.h"
#include "scene/MVNOgreTextureNodeThread.h"
#include "services/MVNProducer.h"
#include "timeline/MVNManager.h"

namespace Morvane {

namespace {
const char* const kTag = "Morvane::MVNFilterSample2";

using PlaneNode = MVNOgreTextureNodeThread<MVNOgreTextureNodePlane>;

// Scenes are engine objects: built on the render thread, and the current
// render target follows the new one.
MVNOgreSceneManager* createScene(int width, int height, const std::string& rtt, const char* step) {
    MVNOgreSceneManager* scene = nullptr;
    MVNOgreManager::getSingleton()->callRenderableWait(
        [&]() {
            scene = new MVNOgreSceneManager(width, height, rtt, "");
            MVNOgreContextBase::resyncCurrentRenderTarget();
        },
        step);
    return scene;
}
}  // namespace

MVNFilterSample2::MVNFilterSample2(const MVNProfile& profile, const char* resourceOne, const char* resourceTwo)
    : MVNOgreFilterService(profile, MVN_FILTER_USE_NORMAL, kTag) {
    block();
    if (resourceOne) setString("resource_one", resourceOne);
    if (resourceTwo) setString("resource_two", resourceTwo);
    setString("service", "ogre.filter.sample2");
    unblock();
    genStringId("filter");
    mRttOne = MVNGeneratorStringId::getSingleton()->genStringId("CanvasRttPass");
    mRttTwo = MVNGeneratorStringId::getSingleton()->genStringId("CanvasRttPass2");
}

MVNFilterSample2::~MVNFilterSample2() {
    log_debug(kTag, "%s destory", getStringId().c_str());
    AutoLock guard(mLock);
    _releaseFilterNode();
}

MVNFilter* MVNFilterSample2::_alloc() {
    return new MVNFilterSample2(profile(), getString("resource_one", "").c_str(),
                                getString("resource_two", "").c_str());
}

void MVNFilterSample2::resetRender(int position) {
    for (MVNOgreTextureNodeImpl* node : {mNodeOne, mNodeTwo, mNodeOut}) {
        if (node) node->setVisible(false);
    }
}

void MVNFilterSample2::_OnVisibleChanged(bool visible) {
    for (MVNOgreTextureNodeImpl* node : {mNodeOne, mNodeTwo, mNodeOut}) {
        if (node) node->setVisible(visible);
    }
}

void MVNFilterSample2::_SetZOrder(int zOrder) {
    for (MVNOgreTextureNodeImpl* node : {mNodeOne, mNodeTwo, mNodeOut}) {
        if (node) node->setZOrder(zOrder);
    }
}

void MVNFilterSample2::_Config() {
    log_debug(kTag, "%s _Config...", getStringId().c_str());
    AutoLock guard(mLock);
    MVNProducer* producer = connectedProducer();
    if (producer == nullptr) {
        log_error(kTag, "%s _Config failed, no producer connected", getStringId().c_str());
        return;
    }
    int width = producer->getInt32("render.width", 0);
    int height = producer->getInt32("render.height", 0);
    int zOrder = producer->getInt32("zOrder", 0);
    MVNRect geometry = producer->getGeometry();
    int inputType = getInt32("_inputType", MVN_INPUT_NONE);
    int outputType = getInt32("_outputType", MVN_OUTPUT_NONE);
    std::string resourceOne = getString("resource_one", "");
    std::string resourceTwo = getString("resource_two", "");
    const MVNProfile& shown = MVNOgreManager::getSingleton()->getProfile();

    mSceneOne = createScene(width, height, mRttOne, "createSceneManager");
    log_debug(kTag, "%s inputType:%s outputType:%s", getStringId().c_str(), getInputName(inputType),
              getOutputName(outputType));

    std::string inputTexture;
    if (!_inputTexture(producer, inputType, inputTexture)) return;

    // The private passes fill their scenes: a plane is built centred at its
    // full size, so they need no geometry.
    mNodeOne = new PlaneNode(inputTexture, width, height, width, height, zOrder, resourceOne,
                             mSceneOne->getSceneName());
    if (outputType == MVN_OUTPUT_SCENE) {
        mNodeOut = new PlaneNode(mRttOne, width, height, shown.width(), shown.height(), zOrder, resourceTwo);
        if (!geometry.isEmpty()) mNodeOut->setGeometry(geometry);
    } else {
        mSceneTwo = createScene(width, height, mRttTwo, "createSceneManager2");
        mNodeTwo = new PlaneNode(mRttOne, width, height, width, height, zOrder, resourceTwo,
                                 mSceneTwo->getSceneName());
        if (outputType == MVN_OUTPUT_RTT_NODE) {
            std::string group = producer->getGroup();
            if (group.empty()) {
                mNodeOut = new PlaneNode(mRttTwo, width, height, shown.width(), shown.height(), zOrder,
                                         std::string());
            } else {
                mNodeOut = new PlaneNode(mRttTwo, width, height, shown.width(), shown.height(), zOrder,
                                         std::string(), group);
            }
            if (!geometry.isEmpty()) mNodeOut->setGeometry(geometry);
        } else {
            block();
            setString("_outputRtt", mSceneTwo->getRttName());
            unblock();
        }
    }
    _SetDefaultParameters(width, height);
    log_debug(kTag, "%s _Config done", getStringId().c_str());
}

void MVNFilterSample2::_SetDefaultParameters(int width, int height) {
    std::string resourceOne = getString("resource_one", "");
    std::string resourceTwo = getString("resource_two", "");
    float w = static_cast<float>(width);
    float h = static_cast<float>(height);
    MVNOgreManager::getSingleton()->callRenderableWait(
        [&]() {
            auto size = [&](MVNOgreTextureNodeImpl* node) {
                node->setUniformFloat("ufmImageW", w, false);
                node->setUniformFloat("ufmImageH", h, false);
            };
            if (resourceOne == "GaussianBlurX" && mNodeOne) size(mNodeOne);
            if (resourceTwo == "GaussianBlurY") {
                // With a private second pass the size goes to pass one again:
                // the vertical pass keeps its material's own defaults.
                if (mNodeTwo && mNodeOne) size(mNodeOne);
                if (mNodeOut) size(mNodeOut);
            }
        },
        "setDefParams");
}

void MVNFilterSample2::_SetUniform(const std::string& name) {
    float value = static_cast<float>(getDouble(name.c_str(), 0.0));
    MVNOgreManager::getSingleton()->callRenderableWait(
        [&]() {
            for (MVNOgreTextureNodeImpl* node : {mNodeOne, mNodeTwo, mNodeOut}) {
                if (node) node->setUniformFloat(name, value, false);
            }
        },
        "setUniformFloat");
}

bool MVNFilterSample2::_beforeInput(int position) {
    for (MVNOgreTextureNodeImpl* node : {mNodeOne, mNodeTwo, mNodeOut}) {
        if (node) node->setVisible(true);
    }
    return true;
}

bool MVNFilterSample2::_takeFrame(MVNFrame* frame) {
    if (frame == nullptr) return true;
    return _uploadPixels(
        frame,
        [this](unsigned char* data, int width, int height) {
            if (mNodeOne) mNodeOne->updateTexture(data, width, height);
        },
        "%s convert color failed");
}

void MVNFilterSample2::_render(int position, int inputType, int outputType) {
    MVNOgreManager::getSingleton()->callRenderableWait(
        [this]() {
            for (MVNOgreSceneManager* scene : {mSceneOne, mSceneTwo}) {
                if (scene && scene->getRenderTarget()) scene->getRenderTarget()->update(true);
            }
        },
        "canvasRender");
}

void MVNFilterSample2::setGeometry(const MVNRect& rect) {
    if (mNodeOut) mNodeOut->setGeometry(rect);
}

void MVNFilterSample2::_OnRotationChanged(int rotation) {
    log_debug(kTag, "%s _OnRotationChanged %d", getStringId().c_str(), rotation);
    if (mNodeOut && getInt32("_outputType", MVN_OUTPUT_NONE) == MVN_OUTPUT_SCENE) mNodeOut->setRotation(rotation);
}

void MVNFilterSample2::_releaseFilterNode() {
    delete mNodeOne;
    mNodeOne = nullptr;
    delete mNodeTwo;
    mNodeTwo = nullptr;
    delete mNodeOut;
    mNodeOut = nullptr;
    if (mSceneOne == nullptr && mSceneTwo == nullptr) return;
    MVNOgreManager::getSingleton()->callRenderableWait(
        [this]() {
            delete mSceneOne;
            mSceneOne = nullptr;
            delete mSceneTwo;
            mSceneTwo = nullptr;
            MVNOgreContextBase::resyncCurrentRenderTarget();
        },
        "deleteSceneManager");
}

}  // namespace Morvane
