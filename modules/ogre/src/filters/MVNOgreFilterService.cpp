#include "filters/MVNOgreFilterService.h"

#include <cstring>

#include "core/AutoLock.h"
#include "core/MVNByteBuffer.h"
#include "core/MVNByteBufferPool.h"
#include "core/MVNFrame.h"
#include "core/MVNLog.h"
#include "core/MVNPixelUtils.h"
#include "core/MVNUtils.h"
#include "services/MVNProducer.h"
#include "timeline/MVNManager.h"

namespace Morvane {

MVNOgreFilterService::MVNOgreFilterService(const MVNProfile& profile, MVNFilterTypeUse use, const char* tag)
    : MVNFilter(profile, MVN_FILTER_VIDEO, use), mTag(tag) {
    double fps = profile.fps();
    mFrameDuration = fps > 0 ? static_cast<float>(1e6 / fps) : 0.0f;
}

bool MVNOgreFilterService::_configuresAtOnce() {
    MVNMode mode = MVNManager::getSingleton()->getMode();
    return mode == MVN_MODE_EDIT || mode == MVN_MODE_PREVIEW;
}

int MVNOgreFilterService::init() {
    AutoLock guard(mLock);
    _onInit();
    mInited = true;
    return 0;
}

void MVNOgreFilterService::release() {
    AutoLock guard(mLock);
    _releaseFilterNode();
    _onRelease();
    mInited = false;
}

void MVNOgreFilterService::reconfig() {
    {
        AutoLock guard(mLock);
        _releaseFilterNode();
        _onReconfig();
    }
    _Config();
}

void MVNOgreFilterService::_OnConnected(MVNService* service) {
    log_debug(mTag, "%s _OnConnected...", getStringId().c_str());
    if (_configuresAtOnce()) _Config();
    log_debug(mTag, "%s _OnConnected done", getStringId().c_str());
}

void MVNOgreFilterService::_OnDisconnected(MVNService* service) {
    log_debug(mTag, "%s _OnDisconnected", getStringId().c_str());
    AutoLock guard(mLock);
    _releaseFilterNode();
}

void MVNOgreFilterService::_OnPropertyChanged(const char* key) {
    if (key == nullptr) return;
    log_debug(mTag, "%s _OnPropertyChanged %s", getStringId().c_str(), key);
    if (std::strcmp(key, "_inputType") == 0 || std::strcmp(key, "_outputType") == 0 ||
        std::strcmp(key, "_inputRtt") == 0) {
        if (_configuresAtOnce()) reconfig();
    } else if (std::strncmp(key, "ufm", 3) == 0) {
        // A still picture must be drawn again although its position stays.
        MVNService* service = connectedService();
        if (service != nullptr && service->getString("service", "") == "stb_image") {
            service->setBoolean("_stdImageFilterRefresh", true);
        }
        _SetUniform(key);
    } else if (std::strcmp(key, "_zOrder") == 0) {
        _SetZOrder(getInt32("_zOrder", 0));
    } else {
        _OnOtherPropertyChanged(key);
    }
}

bool MVNOgreFilterService::_inputTexture(MVNProducer* producer, int inputType, std::string& texture) {
    texture.clear();
    if (inputType == MVN_INPUT_FRAME) {
        // An image the engine can load by name shows until the first upload.
        if (producer->getString("service", "") == "ogre.image") texture = producer->getString("resource", "");
        return true;
    }
    if (inputType == MVN_INPUT_RTT || inputType == MVN_INPUT_GROUP_RTT) {
        texture = getString("_inputRtt", "");
        if (texture.empty()) {
            log_error(mTag, "filter input rtt not set");
            return false;
        }
        return true;
    }
    log_error(mTag, "error input type %s", getInputName(inputType));
    return false;
}

bool MVNOgreFilterService::_uploadPixels(MVNFrame* frame, const std::function<void(unsigned char*, int, int)>& upload,
                                         const char* failure) {
    if (frame->colorFormat() == MVN_COLOR_BGRA) {
        if (frame->buffer()) upload(frame->buffer()->ptr(), frame->width(), frame->height());
        return true;
    }
    if (frame->colorFormat() == MVN_COLOR_BLANK) return true;
    MVNByteBuffer* converted = nullptr;
    if (frame->getImage(&converted, MVN_COLOR_BGRA) != 0 || converted == nullptr) {
        log_error(mTag, failure, getStringId().c_str());
        return false;
    }
    upload(converted->ptr(), frame->width(), frame->height());
    MVNByteBufferPool::sRelease(converted);
    return true;
}

MVNFrame* MVNOgreFilterService::_fail(MVNFrame* frame) {
    if (frame) MVNFrame::pushBackPool(frame);
    return nullptr;
}

MVNFrame* MVNOgreFilterService::processImage(int position, MVNFrame* frame) {
    AutoLock guard(mLock);
    if (!mInited) {
        log_error(mTag, "%s processImage failed, not init", getStringId().c_str());
        return _fail(frame);
    }
    int inputType = getInt32("_inputType", MVN_INPUT_NONE);
    int outputType = getInt32("_outputType", MVN_OUTPUT_NONE);
    block();
    setInt32("_frames", position);
    unblock();
    if (!_beforeInput(position)) return _fail(frame);

    if (inputType == MVN_INPUT_FRAME) {
        if (!_takeFrame(frame)) return _fail(frame);
    } else if (inputType == MVN_INPUT_RTT || inputType == MVN_INPUT_GROUP_RTT) {
        if (frame != nullptr) {
            if (frame->colorFormat() != MVN_COLOR_RTT) {
                log_error(mTag, "filter not support color %s", getColorFormatName(frame->colorFormat()));
                return _fail(frame);
            }
            std::string expected = getString("_inputRtt", "");
            if (frame->rtt() != expected) {
                log_error(mTag, "%s input rtt error %s->%s", getStringId().c_str(), frame->rtt().c_str(),
                          expected.c_str());
                return _fail(frame);
            }
        }
    } else {
        log_error(mTag, "error input type %s", getInputName(inputType));
        return _fail(frame);
    }

    // Configuration failed (its reason is in the log): the filter stands
    // aside and the picture goes on as it came, so the clip stays drawn.
    if (frame != nullptr && _standsAside()) return frame;

    _render(position, inputType, outputType);

    std::string outputRtt;
    if (outputType == MVN_OUTPUT_SCENE) {
        // Nothing to hand on by name: the picture is a quad of the shared scene.
    } else if (outputType == MVN_OUTPUT_RTT || outputType == MVN_OUTPUT_RTT_CHAIN ||
               outputType == MVN_OUTPUT_RTT_NODE) {
        outputRtt = _outputRtt();
    } else {
        log_error(mTag, "error output type %s", getOutputName(outputType));
        return _fail(frame);
    }
    MVNFrame* out = MVNFrame::pullFromPool(1);
    if (out == nullptr) {
        log_error(mTag, "processImage failed, pull frame error");
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

}  // namespace Morvane
