#include "filters/MVNFilterSample.h"

#include <OgreBlendMode.h>
#include <OgreTextureManager.h>

#include <cstring>

#include "core/AutoLock.h"
#include "core/MVNByteBuffer.h"
#include "core/MVNByteBufferPool.h"
#include "filters/MVNFilterCatalogue.h"
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
}  // namespace

MVNFilterSample::MVNFilterSample(const MVNProfile& profile, const char* resource, MVNFilterTypeUse use)
    : MVNOgreFilterService(profile, use, kTag) {
    block();
    setString("resource", resource ? resource : "");
    setString("service", "ogre.filter.sample");
    unblock();
    genStringId("filter");
    _PropertiesInit(resource ? resource : "");
    mFilterRtt = MVNGeneratorStringId::getSingleton()->genStringId("FilterRtt");
    mLutTextureName = MVNGeneratorStringId::getSingleton()->genStringId("LutFilterTexture");
    mPassRtt = MVNGeneratorStringId::getSingleton()->genStringId("FilterRttPass");
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

void MVNFilterSample::resetRender(int position) {
    if (mFilterNode) mFilterNode->setVisible(false);
}

bool MVNFilterSample::drawsPicture() {
    AutoLock guard(mLock);
    return mFilterNode != nullptr;
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
    if (!_inputTexture(producer, inputType, inputTexture)) return;

    // A separable filter draws the same picture in two cheaper passes, the
    // first into a texture of its own.
    const MVNFilterCatalogueEntry* entry = MVNFilterCatalogue::find(resource);
    bool twoPass = entry != nullptr && entry->passOne != nullptr && entry->passTwo != nullptr;
    std::string material = twoPass ? entry->passTwo : resource;

    switch (outputType) {
        case MVN_OUTPUT_SCENE: {
            auto* node = new MVNOgreFilterMaterial(material, width, height, zOrder, inputTexture, anim, groupName);
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
            mFilterNode = new MVNOgreFilterScene(material, width, height, zOrder, inputTexture, showNode, mFilterRtt,
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

    if (twoPass) mFilterNode->setFirstPass(entry->passOne, mPassRtt);
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

bool MVNFilterSample::_beforeInput(int position) {
    MVNProducer* producer = _producer();
    std::string resource = getString("resource", "");
    const MVNFilterCatalogueEntry* entry = MVNFilterCatalogue::find(resource);
    if (mFilterNode && producer && entry && entry->special == MVNFilterSpecial::SampleSpan) {
        // These can be limited to a part of the clip; outside it the shader
        // leaves the picture alone.
        int playtime = producer->getPlaytime();
        float p = playtime > 0 ? static_cast<float>(position) / static_cast<float>(playtime) : 0.0f;
        bool outside = getDouble("filterSampleIn", 0.0) > p || p > getDouble("filterSampleOut", 1.0);
        mFilterNode->setUniformFloat("ufmUpdateDefault", outside ? 1.0f : 0.0f);
    }

    if (mFilterNode) {
        mFilterNode->setVisible(true);
        _processUniform(position);
    }
    return true;
}

bool MVNFilterSample::_takeFrame(MVNFrame* frame) {
    if (frame == nullptr) return true;
    return _uploadPixels(
        frame,
        [this](unsigned char* data, int width, int height) {
            if (mFilterNode) mFilterNode->updateTexture(data, width, height);
        },
        "%s convert color failed");
}

void MVNFilterSample::_render(int position, int inputType, int outputType) {
    if (mFilterNode == nullptr) return;
    if (outputType == MVN_OUTPUT_RTT || outputType == MVN_OUTPUT_RTT_CHAIN || outputType == MVN_OUTPUT_RTT_NODE) {
        mFilterNode->render(inputType == MVN_INPUT_FRAME ? position : getInt32("_frames", position));
    } else if (outputType == MVN_OUTPUT_SCENE) {
        // The quad is drawn with the scene; only a first pass draws now.
        mFilterNode->render(position);
    }
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
