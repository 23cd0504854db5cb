#include "transitions/MVNTransitionSample.h"

#include <cstring>
#include <filesystem>

#include "core/MVNByteBuffer.h"
#include "core/MVNByteBufferPool.h"
#include "core/MVNFrame.h"
#include "core/MVNLog.h"
#include "timeline/MVNFactory.h"
#include "services/MVNFilter.h"
#include "timeline/MVNManager.h"
#include "transitions/MVNOgreTransitionMaterialCanvas.h"
#include "transitions/MVNTransitionGlslFile.h"

namespace Morvane {

namespace {
const char* const kTag = "Morvane::MVNTransitionSample";
}  // namespace

MVNTransitionSample::MVNTransitionSample(const MVNProfile& profile, const char* resource)
    : MVNTransition(profile), resource(resource ? resource : "") {
    block();
    setString("service", "ogre.transition.sample");
    setString("resource", this->resource);
    setBoolean("transitionInvert", false);
    unblock();
}

MVNTransitionSample::~MVNTransitionSample() {
    log_debug(kTag, "%s destory", getStringId().c_str());
    _ReleaseNode();
}

int MVNTransitionSample::init() { return MVNTransition::init(); }

void MVNTransitionSample::release() {
    log_debug(kTag, "release...");
    _ReleaseNode();
    MVNTransition::release();
    log_debug(kTag, "release done");
}

void MVNTransitionSample::_ReleaseNode() {
    if (node == nullptr) return;
    node->release();
    delete node;
    node = nullptr;
}

std::string MVNTransitionSample::_MaterialFor(const std::string& name) {
    if (!MVNTransitionGlslFile::isGlslFile(name)) return name;
    std::string material = MVNTransitionGlslFile::material(name);
    return material.empty() ? name : material;
}

MVNRect MVNTransitionSample::_ClipGeometry(MVNProducer* clip) const {
    MVNRect rect = clip->getGeometry();
    // All zero stands for the whole profile.
    if (rect.isEmpty()) rect = MVNRect(0, 0, static_cast<float>(profile().width()), static_cast<float>(profile().height()));
    return rect;
}

std::string MVNTransitionSample::_InputTexture(MVNProducer* clip) const {
    std::string rtt = clip->getString("_outputRtt", "");
    // An image clip's frames are blank: its picture is the texture the
    // engine loaded under the clip's resource, and the converter samples it
    // there.
    if (rtt.empty() && clip->getString("service", "") == "ogre.image") rtt = clip->getString("resource", "");
    return rtt;
}

bool MVNTransitionSample::_HasCanvas(MVNProducer* clip) {
    std::vector<std::string> ids;
    clip->getVideoFilters(ids);
    if (ids.empty()) return false;
    // Only the last filter counts: a canvas followed by another filter no
    // longer fills the profile by itself.
    MVNFilter* last = getFilterById(ids.back());
    return last != nullptr && last->filterTypeUse() == MVN_FILTER_USE_CANVAS;
}

void MVNTransitionSample::_Config() {
    if (clipA == nullptr || clipB == nullptr) return;
    int wA = clipA->getInt32("render.width", 0);
    int hA = clipA->getInt32("render.height", 0);
    int zOrder = clipA->getInt32("zOrder", 0);
    int wB = clipB->getInt32("render.width", 0);
    int hB = clipB->getInt32("render.height", 0);
    bool canvasA = _HasCanvas(clipA);
    bool canvasB = _HasCanvas(clipB);
    // A clip that ends in a canvas filter already fills the whole profile.
    if (canvasA) wA = profile().width(), hA = profile().height();
    if (canvasB) wB = profile().width(), hB = profile().height();
    std::string rttA = _InputTexture(clipA);
    std::string rttB = _InputTexture(clipB);
    int animA = clipA->getAnimation();
    int animB = clipB->getAnimation();

    node = new MVNOgreTransitionMaterialCanvas(_MaterialFor(resource), wA, hA, wB, hB, zOrder, rttA, rttB, animA,
                                               animB, getGroup());
    if (node->init() == -1) {
        log_error(kTag, "MVNOgreTransitionMaterialCanvas node init failed");
        delete node;
        node = nullptr;
        return;
    }
    MVNRect whole(0, 0, static_cast<float>(profile().width()), static_cast<float>(profile().height()));
    node->setGeometryA(canvasA ? whole : _ClipGeometry(clipA));
    node->setRotationA(clipA->getRotation());
    node->setGeometryB(canvasB ? whole : _ClipGeometry(clipB));
    node->setRotationB(clipB->getRotation());
    node->setVisible(false);
    _SetupParameters();
}

void MVNTransitionSample::_SetupParameters() {
    if (node == nullptr) return;
    if (getString("resource", "") == "CircleScale") {
        node->setUniformFloat("ufmImageWidth", static_cast<float>(profile().width()));
        node->setUniformFloat("ufmImageHeight", static_cast<float>(profile().height()));
    }
    // The clip's own settings of the program's uniforms, over its defaults.
    for (const std::string& key : keys()) {
        if (key.compare(0, 3, "ufm") == 0) _ApplyUniform(key);
    }
}

// "ufmImageWidth" is the library's own name; "ufmamplitude" reaches a .glsl
// file's "amplitude". Both are tried: a name the program lacks is skipped.
void MVNTransitionSample::_ApplyUniform(const std::string& key) {
    if (node == nullptr) return;
    float value = static_cast<float>(getDouble(key.c_str(), 0.0));
    node->setUniformFloat(key, value);
    if (key.size() > 3) node->setUniformFloat(key.substr(3), value);
}

void MVNTransitionSample::_ReadEasing() {
    std::string text = getString("transitionEasing", "linear");
    if (!easing.parse(text)) {
        log_error(kTag, "%s unknown transitionEasing \"%s\", linear used", getStringId().c_str(), text.c_str());
    }
}

float MVNTransitionSample::progressAt(int position) const {
    int playtime = getPlaytime();
    float progress = playtime > 0 ? static_cast<float>(position) / static_cast<float>(playtime) : 0.0f;
    return easing.apply(progress);
}

MVNFrame* MVNTransitionSample::processImage(int position, MVNFrame* frameA, MVNFrame* frameB) {
    struct Side {
        MVNFrame* frame;
        void (MVNOgreTransitionBase::*upload)(uint8_t*, int, int);
        const char* failure;
    };
    const Side sides[] = {{frameA, &MVNOgreTransitionBase::updateTextureA, "%s convert frameA color failed"},
                          {frameB, &MVNOgreTransitionBase::updateTextureB, "%s convert frameB color failed"}};
    for (const Side& side : sides) {
        MVNFrame* frame = side.frame;
        if (frame == nullptr) continue;
        int type = frame->colorFormat();
        if (type == MVN_COLOR_BGRA) {
            if (node && frame->buffer()) (node->*side.upload)(frame->buffer()->ptr(), frame->width(), frame->height());
        } else if (type != MVN_COLOR_BLANK && type != MVN_COLOR_RTT) {
            // Blank is nothing to upload, and a render texture is sampled by
            // the converter where it lies.
            MVNByteBuffer* converted = nullptr;
            if (frame->getImage(&converted, MVN_COLOR_BGRA) != 0 || converted == nullptr) {
                MVNFrame::pushBackPool(frameA);
                MVNFrame::pushBackPool(frameB);
                log_error(kTag, side.failure, getStringId().c_str());
                return nullptr;
            }
            if (node) (node->*side.upload)(converted->ptr(), frame->width(), frame->height());
            MVNByteBufferPool::sRelease(converted);
        }
    }
    MVNFrame::pushBackPool(frameA);
    MVNFrame::pushBackPool(frameB);
    // The clips are drawn by the transition now: their own quads leave the
    // scene until the timeline asks them for a picture again.
    if (clipA) clipA->resetRender(position);
    if (clipB) clipB->resetRender(position);
    if (node) {
        node->setVisible(true);
        // An animated clip goes on moving in its converted picture, from the
        // start of its animation.
        if (clipA && clipA->getAnimation() != 0) node->updateAnimationA(position);
        if (clipB && clipB->getAnimation() != 0) node->updateAnimationB(position);
        node->render(position);
        node->process(progressAt(position));
    }
    return nullptr;
}

void MVNTransitionSample::_OnPropertyChanged(const char* key) {
    if (key == nullptr) return;
    log_debug(kTag, "_OnPropertyChanged:%s", key);
    if (std::strcmp(key, "resource") == 0) {
        std::string value = getString("resource", "");
        if (node) node->setResource(_MaterialFor(value));
    } else if (std::strcmp(key, "_animationOffsetA") == 0) {
        if (node) node->getAnimationObjectA();
    } else if (std::strcmp(key, "rotationA") == 0) {
        if (node) node->setRotationA(getInt32(key, 0));
    } else if (std::strcmp(key, "rotationB") == 0) {
        if (node) node->setRotationB(getInt32(key, 0));
    } else if (std::strcmp(key, "transitionInvert") == 0) {
        if (node) node->setUniformFloat("transitionInvert", getBoolean(key, false) ? 1.0f : 0.0f);
    } else if (std::strcmp(key, "transitionEasing") == 0) {
        _ReadEasing();
    } else if (std::strncmp(key, "ufm", 3) == 0) {
        _ApplyUniform(key);
    }
    MVNTransition::_OnPropertyChanged(key);
}

void MVNTransitionSample::setDefaultGeometry() {
    if (clipA) clipA->setDefaultGeometry();
    if (clipB) clipB->setDefaultGeometry();
    if (node == nullptr) return;
    if (clipA && !_HasCanvas(clipA)) node->setGeometryA(_ClipGeometry(clipA));
    if (clipB && !_HasCanvas(clipB)) node->setGeometryB(_ClipGeometry(clipB));
}

void MVNTransitionSample::_OnGeometryChanged(const MVNRect& rect) {
    if (node) node->setGeometry(rect);
}

void MVNTransitionSample::_OnVisibleChanged(bool visible) {
    if (node) node->setVisible(visible);
}

void MVNTransitionSample::resetRender(int position) {
    MVNTransition::resetRender(position);
    // A transition shows only while it runs.
    if (node) node->setVisible(false);
}

void MVNTransitionSample::_OnConnected() {
    log_debug(kTag, "%s _OnConnected...", getStringId().c_str());
    MVNMode mode = MVNManager::getSingleton()->getMode();
    if (mode == MVN_MODE_EDIT || mode == MVN_MODE_PREVIEW) _Config();
    log_debug(kTag, "%s _OnConnected done", getStringId().c_str());
}

void MVNTransitionSample::reconfig() {
    log_debug(kTag, "%s reconfig...", getStringId().c_str());
    _ReleaseNode();
    _Config();
    log_debug(kTag, "%s reconfig done", getStringId().c_str());
}

void MVNTransitionSample::_OnDisconnected() {
    log_debug(kTag, "%s _OnDisconnected", getStringId().c_str());
    _ReleaseNode();
}

}  // namespace Morvane
