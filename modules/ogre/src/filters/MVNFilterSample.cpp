#include "filters/MVNFilterSample.h"

#include <OgreBlendMode.h>
#include <OgreTextureManager.h>

#include <cstring>

#include "core/AutoLock.h"
#include "core/MVNByteBuffer.h"
#include "core/MVNByteBufferPool.h"
#include "filters/MVNFilterParameters.h"
#include "core/MVNFrame.h"
#include "core/MVNGeneratorStringId.h"
#include "core/MVNLog.h"
#include "timeline/MVNManager.h"
#include "filters/MVNOgreFilterMaterial.h"
#include "filters/MVNOgreFilterScene.h"
#include "engine/MVNOgreManager.h"
#include "core/MVNPixelUtils.h"
#include "services/MVNProducer.h"
#include "core/MVNUtils.h"

namespace Morvane {

namespace {
const char* const kTag = "MVNFilterSample";


// The chain properties of a filter are applied at once only while editing
// or previewing; the render modes configure when they are told to.
bool configuresAtOnce() {
    MVNMode mode = MVNManager::getSingleton()->getMode();
    return mode == MVN_MODE_EDIT || mode == MVN_MODE_PREVIEW;
}
}  // namespace

MVNFilterSample::MVNFilterSample(const MVNProfile& profile, const char* resource, MVNFilterTypeUse use)
    : MVNFilter(profile, MVN_FILTER_VIDEO, use) {
    block();
    setString("resource", resource ? resource : "");
    setString("service", "ogre.filter.sample");
    unblock();
    genStringId("filter");
    _PropertiesInit(resource ? resource : "");
    mFilterRtt = MVNGeneratorStringId::getSingleton()->genStringId("FilterRtt");
    mLutTextureName = MVNGeneratorStringId::getSingleton()->genStringId("LutFilterTexture");
    double fps = profile.fps();
    mFrameDuration = fps > 0 ? static_cast<float>(1e6 / fps) : 0.0f;
}

MVNFilterSample::~MVNFilterSample() {
    log_debug(kTag, "%s destory", getStringId().c_str());
    AutoLock guard(mLock);
    _releaseFilterNode();
}

MVNFilter* MVNFilterSample::_alloc() {
    return new MVNFilterSample(profile(), getString("resource", "").c_str(), MVN_FILTER_USE_NORMAL);
}

MVNProducer* MVNFilterSample::_producer() const { return connectedProducer(); }

void MVNFilterSample::_PropertiesInit(const std::string& resource) {
    std::string none;
    MVNFilterParameters(*this, resource, nullptr, nullptr, none, 0).writeDefaults();
}

int MVNFilterSample::init() {
    AutoLock guard(mLock);
    mInited = true;
    return 0;
}

void MVNFilterSample::release() {
    AutoLock guard(mLock);
    _releaseFilterNode();
    mInited = false;
}

void MVNFilterSample::resetRender(int position) {
    if (mFilterNode) mFilterNode->setVisible(false);
}

void MVNFilterSample::reconfig() {
    {
        AutoLock guard(mLock);
        _releaseFilterNode();
    }
    _Config();
}

void MVNFilterSample::_OnConnected(MVNService* service) {
    log_debug(kTag, "%s _OnConnected...", getStringId().c_str());
    if (configuresAtOnce()) _Config();
    log_debug(kTag, "%s _OnConnected done", getStringId().c_str());
}

bool MVNFilterSample::drawsPicture() {
    AutoLock guard(mLock);
    return mFilterNode != nullptr;
}

void MVNFilterSample::_OnDisconnected(MVNService* service) {
    log_debug(kTag, "%s _OnDisconnected", getStringId().c_str());
    AutoLock guard(mLock);
    _releaseFilterNode();
}

void MVNFilterSample::_Config() {
    std::string resource = getString("resource", "");
    log_debug(kTag, "%s %s _Config...", getStringId().c_str(), resource.c_str());
    AutoLock guard(mLock);
    MVNProducer* producer = _producer();
    if (producer == nullptr) {
        log_error(kTag, "%s _Config failed, no producer connected", getStringId().c_str());
        return;
    }
    int width = producer->getInt32("render.width", 0);
    int height = producer->getInt32("render.height", 0);
    int zOrder = producer->getInt32("zOrder", 0);
    MVNRect geometry = producer->getGeometry();
    int anim = producer->getInt32("anim", 0);
    int rotation = producer->getInt32("rotation", 0);
    int inputType = getInt32("_inputType", MVN_INPUT_NONE);
    int outputType = getInt32("_outputType", MVN_OUTPUT_NONE);
    std::string groupName = producer->getGroup();
    log_debug(kTag, "%s inputType:%s outputType:%s", getStringId().c_str(), getInputName(inputType),
              getOutputName(outputType));

    std::string inputTexture;
    if (inputType == MVN_INPUT_FRAME) {
        // An image the engine can load by name shows until the first upload.
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

    switch (outputType) {
        case MVN_OUTPUT_SCENE: {
            auto* node = new MVNOgreFilterMaterial(resource, width, height, zOrder, inputTexture, anim, groupName);
            node->setRotation(rotation);
            mFilterNode = node;
            block();
            setString("_outputRtt", "");
            setInt32("_anim", anim);
            unblock();
            break;
        }
        case MVN_OUTPUT_RTT:
        case MVN_OUTPUT_RTT_CHAIN:
        case MVN_OUTPUT_RTT_NODE: {
            bool showNode = outputType == MVN_OUTPUT_RTT_NODE;
            mFilterNode = new MVNOgreFilterScene(resource, width, height, zOrder, inputTexture, showNode, mFilterRtt,
                                                 0, showNode ? groupName : std::string());
            block();
            setString("_outputRtt", mFilterNode->getRTTTextureName());
            unblock();
            break;
        }
        default:
            log_error(kTag, "error output type %s", getOutputName(outputType));
            return;
    }

    if (mFilterNode->init() == -1) {
        log_error(kTag, "Filter render node init failed");
        delete mFilterNode;
        mFilterNode = nullptr;
    } else {
        if (!geometry.isEmpty()) mFilterNode->setGeometry(geometry);
        _SetupParameters();
        if (outputType == MVN_OUTPUT_SCENE) {
            mFilterNode->setSceneBlending(Ogre::SBF_SOURCE_ALPHA, Ogre::SBF_ONE_MINUS_SOURCE_ALPHA);
        } else {
            mFilterNode->setSceneBlending(Ogre::SBF_ONE, Ogre::SBF_ONE);
        }
    }
    log_debug(kTag, "%s %s _Config done", getStringId().c_str(), resource.c_str());
}

void MVNFilterSample::_SetupParameters() {
    MVNFilterParameters(*this, getString("resource", ""), mFilterNode, _producer(), mLutTextureName, profile().fps())
        .setup();
}

void MVNFilterSample::_SetUniform(const std::string& name) {
    MVNFilterParameters(*this, getString("resource", ""), mFilterNode, _producer(), mLutTextureName, profile().fps())
        .setUniform(name);
}

void MVNFilterSample::_SetZOrder(int zOrder) {
    if (mFilterNode) mFilterNode->setZOrder(zOrder);
}

void MVNFilterSample::_OnPropertyChanged(const char* key) {
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
        _SetUniform(key);
    } else if (std::strcmp(key, "_zOrder") == 0) {
        _SetZOrder(getInt32("_zOrder", 0));
    }
}

MVNFrame* MVNFilterSample::_fail(MVNFrame* frame) {
    if (frame) MVNFrame::pushBackPool(frame);
    return nullptr;
}

MVNFrame* MVNFilterSample::processImage(int position, MVNFrame* frame) {
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

    MVNProducer* producer = _producer();
    std::string resource = getString("resource", "");
    if (mFilterNode && producer && (resource == "BlurFilter" || resource == "MosaicFilter")) {
        // These two can be limited to a part of the clip; outside it the
        // shader leaves the picture alone.
        int playtime = producer->getPlaytime();
        float p = playtime > 0 ? static_cast<float>(position) / static_cast<float>(playtime) : 0.0f;
        bool outside = getDouble("filterSampleIn", 0.0) > p || p > getDouble("filterSampleOut", 1.0);
        mFilterNode->setUniformFloat("ufmUpdateDefault", outside ? 1.0f : 0.0f);
    }

    if (mFilterNode) {
        mFilterNode->setVisible(true);
        _processUniform(position);
    }

    if (inputType == MVN_INPUT_FRAME) {
        if (frame != nullptr) {
            if (frame->colorFormat() == MVN_COLOR_BGRA) {
                if (mFilterNode && frame->buffer()) {
                    mFilterNode->updateTexture(frame->buffer()->ptr(), frame->width(), frame->height());
                }
            } else if (frame->colorFormat() != MVN_COLOR_BLANK) {
                MVNByteBuffer* converted = nullptr;
                if (frame->getImage(&converted, MVN_COLOR_BGRA) != 0 || converted == nullptr) {
                    log_error(kTag, "%s convert color failed", getStringId().c_str());
                    return _fail(frame);
                }
                if (mFilterNode) mFilterNode->updateTexture(converted->ptr(), frame->width(), frame->height());
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

    if (mFilterNode == nullptr && frame != nullptr) {
        // Configuration failed (its reason is in the log): the filter stands
        // aside and the picture goes on as it came, so the clip stays drawn.
        return frame;
    }
    std::string outputRtt;
    if (outputType == MVN_OUTPUT_SCENE) {
        // Nothing to draw now: the quad is drawn with the shared scene.
    } else if (outputType == MVN_OUTPUT_RTT || outputType == MVN_OUTPUT_RTT_CHAIN ||
               outputType == MVN_OUTPUT_RTT_NODE) {
        if (mFilterNode) mFilterNode->render(inputType == MVN_INPUT_FRAME ? position : getInt32("_frames", position));
        outputRtt = mFilterRtt;
    } else {
        log_error(kTag, "error output type %s", getOutputName(outputType));
        return _fail(frame);
    }
    MVNFrame* out = MVNFrame::pullFromPool(1);
    if (out == nullptr) {
        log_error(kTag, "processImage failed, pull frame error");
        return _fail(frame);
    }
    // A frame that names no texture (the picture stays in the scene) is
    // still a render-texture frame: it carries no pixels.
    out->setRtt(outputRtt);
    out->setWidth(0);
    out->setHeight(0);
    out->setColorFormat(MVN_COLOR_RTT);
    if (frame) MVNFrame::pushBackPool(frame);
    return out;
}

void MVNFilterSample::_processUniform(int position) {
    MVNProducer* producer = _producer();
    float delta = 0;
    if (mLastFrame != 0xFFFFFFFFu) {
        // A seek backwards gives a negative step: played time shrinks.
        delta = static_cast<float>(static_cast<int>(static_cast<uint32_t>(position) - mLastFrame)) * mFrameDuration /
                1e6f;
    }
    mTime += delta;
    mLastFrame = static_cast<uint32_t>(position);
    std::string resource = getString("resource", "");
    float time = mTime;
    MVNOgreManager::getSingleton()->callRenderableWait(
        [&]() {
            MVNFilterParameters(*this, resource, mFilterNode, producer, mLutTextureName, profile().fps())
                .perFrame(position, time);
        },
        "filterProcessUniform");
}

void MVNFilterSample::setGeometry(const MVNRect& rect) {
    if (mFilterNode == nullptr) return;
    mFilterNode->setGeometry(rect);
    if (_producer() != nullptr) {
        MVNFilterParameters(*this, getString("resource", ""), mFilterNode, _producer(), mLutTextureName,
                            profile().fps())
            .applyGeometry();
    }
}

void MVNFilterSample::_OnVisibleChanged(bool visible) {
    if (mFilterNode) mFilterNode->setVisible(visible);
}

void MVNFilterSample::_OnAnimationChanged(int animation) {
    log_debug(kTag, "%s _OnAnimationChanged %d", getStringId().c_str(), animation);
    // The animation is taken at configuration only.
    (void)getInt32("_outputType", MVN_OUTPUT_NONE);
}

void MVNFilterSample::_OnRotationChanged(int rotation) {
    log_debug(kTag, "%s _OnRotationChanged %d", getStringId().c_str(), rotation);
    if (mFilterNode && getInt32("_outputType", MVN_OUTPUT_NONE) == MVN_OUTPUT_SCENE) mFilterNode->setRotation(rotation);
}

void MVNFilterSample::_releaseFilterNode() {
    _releaseLutTexture();
    if (mFilterNode) {
        mFilterNode->release();
        delete mFilterNode;
        mFilterNode = nullptr;
    }
}

void MVNFilterSample::_releaseLutTexture() {
    std::string name = mLutTextureName;
    MVNOgreManager::getSingleton()->callRenderableWait(
        [name]() {
            Ogre::TextureManager* textures = Ogre::TextureManager::getSingletonPtr();
            if (textures && textures->resourceExists(name, Ogre::RGN_DEFAULT)) {
                textures->unload(name, Ogre::RGN_DEFAULT);
                textures->remove(name, Ogre::RGN_DEFAULT);
            }
        },
        "releaseLutTexture");
}

}  // namespace Morvane
