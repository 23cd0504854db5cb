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

// As for the one-pass filter: the chain applies at once only while editing
// or previewing.
bool configuresAtOnce() {
    MVNMode mode = MVNManager::getSingleton()->getMode();
    return mode == MVN_MODE_EDIT || mode == MVN_MODE_PREVIEW;
}

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
    : MVNFilter(profile, MVN_FILTER_VIDEO, MVN_FILTER_USE_NORMAL) {
    block();
    if (resourceOne) setString("resource_one", resourceOne);
    if (resourceTwo) setString("resource_two", resourceTwo);
    setString("service", "ogre.filter.sample2");
    unblock();
    genStringId("filter");
    mRttOne = MVNGeneratorStringId::getSingleton()->genStringId("CanvasRttPass");
    mRttTwo = MVNGeneratorStringId::getSingleton()->genStringId("CanvasRttPass2");
    double fps = profile.fps();
    mFrameDuration = fps > 0 ? static_cast<float>(1e6 / fps) : 0.0f;
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

int MVNFilterSample2::init() {
    AutoLock guard(mLock);
    mInited = true;
    return 0;
}

void MVNFilterSample2::release() {
    AutoLock guard(mLock);
    _releaseFilterNode();
    mInited = false;
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

void MVNFilterSample2::reconfig() {
    {
        AutoLock guard(mLock);
        _releaseFilterNode();
    }
    _Config();
}

void MVNFilterSample2::_OnConnected(MVNService* service) {
    log_debug(kTag, "%s _OnConnected...", getStringId().c_str());
    if (configuresAtOnce()) _Config();
    log_debug(kTag, "%s _OnConnected done", getStringId().c_str());
}

void MVNFilterSample2::_OnDisconnected(MVNService* service) {
    log_debug(kTag, "%s _OnDisconnected", getStringId().c_str());
    AutoLock guard(mLock);
    _releaseFilterNode();
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
    if (inputType == MVN_INPUT_FRAME) {
        if (producer->getString("service", "") == "ogre.image") inputTexture = producer->getString("resource", "");
    } else if (inputType == MVN_INPUT_RTT || inputType == MVN_INPUT_GROUP_RTT) {
        inputTexture = getString("_inputRtt", "");
        if (inputTexture.empty()) {
            log_error(kTag, "filter input rtt not set");
            return;
        }
    } else {
        log_error(kTag, "error input type %s", getInputName(inputType));
        return;
    }

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

void MVNFilterSample2::_SetUniformFloat(const std::string& name, float value) {
    MVNOgreManager::getSingleton()->callRenderableWait(
        [&]() {
            for (MVNOgreTextureNodeImpl* node : {mNodeOne, mNodeTwo, mNodeOut}) {
                if (node) node->setUniformFloat(name, value, false);
            }
        },
        "setUniformFloat");
}

void MVNFilterSample2::_OnPropertyChanged(const char* key) {
    if (key == nullptr) return;
    log_debug(kTag, "%s _OnPropertyChanged %s", getStringId().c_str(), key);
    if (std::strcmp(key, "_inputType") == 0 || std::strcmp(key, "_outputType") == 0 ||
        std::strcmp(key, "_inputRtt") == 0) {
        if (configuresAtOnce()) reconfig();
    } else if (std::strncmp(key, "ufm", 3) == 0) {
        // A still picture must be drawn again although its position stays.
        MVNService* service = connectedService();
        if (service != nullptr && service->getString("service", "") == "stb_image") {
            service->setBoolean("_stdImageFilterRefresh", true);
        }
        _SetUniformFloat(key, static_cast<float>(getDouble(key, 0.0)));
    } else if (std::strcmp(key, "_zOrder") == 0) {
        _SetZOrder(getInt32("_zOrder", 0));
    }
}

MVNFrame* MVNFilterSample2::_fail(MVNFrame* frame) {
    if (frame) MVNFrame::pushBackPool(frame);
    return nullptr;
}

MVNFrame* MVNFilterSample2::processImage(int position, MVNFrame* frame) {
    AutoLock guard(mLock);
    if (!mInited) {
        log_error(kTag, "%s processImage failed, not init", getStringId().c_str());
        return _fail(frame);
    }
    int inputType = getInt32("_inputType", MVN_INPUT_NONE);
    int outputType = getInt32("_outputType", MVN_OUTPUT_NONE);
    block();
    setInt32("_frames", position);
    unblock();
    for (MVNOgreTextureNodeImpl* node : {mNodeOne, mNodeTwo, mNodeOut}) {
        if (node) node->setVisible(true);
    }

    if (inputType == MVN_INPUT_FRAME) {
        if (frame != nullptr) {
            if (frame->colorFormat() == MVN_COLOR_BGRA) {
                if (mNodeOne && frame->buffer()) {
                    mNodeOne->updateTexture(frame->buffer()->ptr(), frame->width(), frame->height());
                }
            } else if (frame->colorFormat() != MVN_COLOR_BLANK) {
                MVNByteBuffer* converted = nullptr;
                if (frame->getImage(&converted, MVN_COLOR_BGRA) != 0 || converted == nullptr) {
                    log_error(kTag, "%s convert color failed", getStringId().c_str());
                    return _fail(frame);
                }
                if (mNodeOne) mNodeOne->updateTexture(converted->ptr(), frame->width(), frame->height());
                MVNByteBufferPool::sRelease(converted);
            }
        }
    } else if (inputType == MVN_INPUT_RTT || inputType == MVN_INPUT_GROUP_RTT) {
        if (frame != nullptr) {
            if (frame->colorFormat() != MVN_COLOR_RTT) {
                log_error(kTag, "filter not support color %s", getColorFormatName(frame->colorFormat()));
                return _fail(frame);
            }
            std::string expected = getString("_inputRtt", "");
            if (frame->rtt() != expected) {
                log_error(kTag, "%s input rtt error %s->%s", getStringId().c_str(), frame->rtt().c_str(),
                          expected.c_str());
                return _fail(frame);
            }
        }
    } else {
        log_error(kTag, "error input type %s", getInputName(inputType));
        return _fail(frame);
    }

    MVNOgreManager::getSingleton()->callRenderableWait(
        [this]() {
            for (MVNOgreSceneManager* scene : {mSceneOne, mSceneTwo}) {
                if (scene && scene->getRenderTarget()) scene->getRenderTarget()->update(true);
            }
        },
        "canvasRender");

    std::string outputRtt;
    if (outputType == MVN_OUTPUT_SCENE) {
        // Pass two is the quad of the shared scene.
    } else if (outputType == MVN_OUTPUT_RTT || outputType == MVN_OUTPUT_RTT_CHAIN ||
               outputType == MVN_OUTPUT_RTT_NODE) {
        outputRtt = mRttTwo;
    } else {
        log_error(kTag, "error output type %s", getOutputName(outputType));
        return _fail(frame);
    }
    MVNFrame* out = MVNFrame::pullFromPool(1);
    if (out == nullptr) {
        log_error(kTag, "processImage failed, pull frame error");
        return _fail(frame);
    }
    out->setRtt(outputRtt);
    out->setWidth(0);
    out->setHeight(0);
    out->setColorFormat(MVN_COLOR_RTT);
    if (frame) MVNFrame::pushBackPool(frame);
    return out;
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
