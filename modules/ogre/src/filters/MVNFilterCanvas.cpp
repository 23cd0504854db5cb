#include "filters/MVNFilterCanvas.h"

#include <Ogre.h>

#include <algorithm>
#include <cmath>
#include <cstring>

#include "core/AutoLock.h"
#include "core/MVNByteBuffer.h"
#include "core/MVNByteBufferPool.h"
#include "core/MVNFrame.h"
#include "core/MVNGeneratorStringId.h"
#include "core/MVNGeometry.h"
#include "core/MVNImage.h"
#include "core/MVNLog.h"
#include "core/MVNPixelUtils.h"
#include "core/MVNUtils.h"
#include "engine/MVNOgreContextBase.h"
#include "engine/MVNOgreManager.h"
#include "filters/MVNOgreFilterPass.h"
#include "scene/MVNOgreSceneManager.h"
#include "scene/MVNOgreTextureNodePlane.h"
#include "scene/MVNOgreTextureNodeThread.h"
#include "services/MVNProducer.h"
#include "timeline/MVNManager.h"

namespace Morvane {

namespace {
const char* const kTag = "Morvane::MVNFilterCanvas";

using PlaneNode = MVNOgreTextureNodeThread<MVNOgreTextureNodePlane>;

enum { kCanvasBlur = 0, kCanvasImage = 1, kCanvasColor = 2 };

// In the canvas's own scene the picture stands in front of the background,
// one step nearer the camera.
const int kBackZ = 0;
const int kPictureZ = 1;

// Without a strength the background is blurred five times as wide as a
// clip's blur (strength 2): the plain kernel, taken at the picture's size,
// still shows its details once the background is enlarged to the frame.
const float kDefaultSpread = 5.0f;

// The first pass never draws into fewer than this many texels a side.
const int kSmallestPass = 16;

// `size` centred in `box`.
MVNRect centred(const MVNSize& size, const MVNRect& box) {
    return MVNRect(box.x + (box.width - size.width) / 2, box.y + (box.height - size.height) / 2, size.width,
                   size.height);
}

// `size` scaled with its aspect kept until it covers `box`.
MVNSize covering(const MVNSize& size, const MVNSize& box) {
    if (size.width <= 0 || size.height <= 0) return box;
    float scale = std::max(box.width / size.width, box.height / size.height);
    return MVNSize(size.width * scale, size.height * scale);
}
}  // namespace

MVNFilterCanvas::MVNFilterCanvas(const MVNProfile& profile, int canvasType)
    : MVNOgreFilterService(profile, MVN_FILTER_USE_CANVAS, kTag) {
    block();
    setInt32("canvasType", canvasType);
    setString("resource", "");
    setColor("color", MVNColor4B(0, 0, 0, 255));
    setBoolean("useOrigin", true);
    setString("service", "ogre.filter.canvas");
    unblock();
    genStringId("filter");
    mRttMain = MVNGeneratorStringId::getSingleton()->genStringId("CanvasRtt");
    mRttPass = MVNGeneratorStringId::getSingleton()->genStringId("CanvasRttPass");
}

MVNFilterCanvas::~MVNFilterCanvas() {
    log_debug(kTag, "%s destory", getStringId().c_str());
    AutoLock guard(mLock);
    _releaseFilterNode();
    if (mBackground) MVNFrame::pushBackPool(mBackground);
    mBackground = nullptr;
}

MVNFilter* MVNFilterCanvas::_alloc() { return new MVNFilterCanvas(profile(), getInt32("canvasType", 0)); }

void MVNFilterCanvas::_onInit() {
    int type = getInt32("canvasType", kCanvasBlur);
    if (type == kCanvasColor) {
        mBackground = _loadBgColor(getColor("color", MVNColor4B(0, 0, 0, 255)));
    } else if (type == kCanvasImage) {
        std::string path = getString("resource", "");
        if (path.empty()) {
            log_error(kTag, "not set image path");
        } else {
            mBackground = _loadBgImage(path);
        }
    }
    mBackgroundDirty = true;
}

void MVNFilterCanvas::_onRelease() {
    if (mBackground) MVNFrame::pushBackPool(mBackground);
    mBackground = nullptr;
    mBackgroundDirty = true;
}

void MVNFilterCanvas::resetRender(int position) {
    for (MVNOgreTextureNodeImpl* node : {mNodeBack, mNodePicture, mNodeOut}) {
        if (node) node->setVisible(false);
    }
}

void MVNFilterCanvas::_OnVisibleChanged(bool visible) {
    for (MVNOgreTextureNodeImpl* node : {mNodeBack, mNodePicture, mNodeOut}) {
        if (node) node->setVisible(visible);
    }
}

void MVNFilterCanvas::_SetZOrder(int zOrder) {
    // Only the shown quad has a place among the clips; the private scene
    // keeps its own order.
    if (mNodeOut) mNodeOut->setZOrder(zOrder);
}

void MVNFilterCanvas::_Config() {
    std::string resource = getString("resource", "");
    log_debug(kTag, "%s %s _Config...", getStringId().c_str(), resource.c_str());
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
    int rotation = producer->getInt32("rotation", 0);
    int inputType = getInt32("_inputType", MVN_INPUT_NONE);
    int outputType = getInt32("_outputType", MVN_OUTPUT_NONE);
    int type = getInt32("canvasType", kCanvasBlur);
    const int pw = profile().width();
    const int ph = profile().height();
    const MVNRect frame(0, 0, static_cast<float>(pw), static_cast<float>(ph));
    std::string inputTexture;
    if (!_inputTexture(producer, inputType, inputTexture)) return;
    if (inputType == MVN_INPUT_FRAME && !inputTexture.empty()) {
        // An image clip names the profile's size as its own and lets its
        // quad stretch the file; the canvas shows the picture at the size
        // the file has.
        _pictureFileSize(inputTexture, width, height);
    }
    bool blurred = mBackground == nullptr || type != kCanvasColor;
    int passW = mBackground ? mBackground->width() : width;
    int passH = mBackground ? mBackground->height() : height;
    std::string passInput = mBackground ? std::string() : inputTexture;
    if (!mBackground && !getBoolean("useOrigin", true)) passInput.clear();
    // The widened kernel reads every few texels of the picture; its result
    // has no more detail than a picture that many times smaller holds.
    mPassScale = _passScale(_spread(), passW, passH);
    mPassWidth = passW;
    mPassHeight = passH;
    int smallW = std::max(1, (passW + mPassScale - 1) / mPassScale);
    int smallH = std::max(1, (passH + mPassScale - 1) / mPassScale);

    MVNOgreManager::getSingleton()->callRenderableWait(
        [&]() {
            if (blurred) {
                mPass = new MVNOgreFilterPass("GaussianBlurX", passW, passH, passInput, mRttPass, smallW, smallH);
            }
            mSceneMain = new MVNOgreSceneManager(pw, ph, mRttMain, "");
            MVNOgreContextBase::resyncCurrentRenderTarget();
        },
        "createSceneManager");
    log_debug(kTag, "%s inputType:%s outputType:%s", getStringId().c_str(), getInputName(inputType),
              getOutputName(outputType));

    // The picture, never enlarged, fitted and centred in its clip's place
    // (the whole frame unless the clip was given one).
    MVNRect place = geometry.isEmpty() ? frame : geometry;
    MVNSize fitted = adjustSizeContainAlign(MVNSize(static_cast<float>(width), static_cast<float>(height)),
                                            MVNSize(place.width, place.height), 1);
    mPictureRect = centred(fitted, place);
    // The blurred background covers the whole frame: a background only as
    // large as the picture would hide behind it.
    const std::string& sceneMain = mSceneMain->getSceneName();
    if (mBackground) log_debug(kTag, "use background image");
    if (type == kCanvasColor && mBackground) {
        mBackRect = frame;
        mNodeBack = new PlaneNode(std::string(), pw, ph, pw, ph, kBackZ, std::string(), sceneMain);
    } else {
        mBackRect = centred(covering(MVNSize(static_cast<float>(passW), static_cast<float>(passH)),
                                     MVNSize(static_cast<float>(pw), static_cast<float>(ph))),
                            frame);
        mNodeBack = new PlaneNode(mRttPass, smallW, smallH, pw, ph, kBackZ, std::string("GaussianBlurY"), sceneMain);
    }
    mNodeBack->setGeometry(mBackRect);
    mNodePicture = new PlaneNode(inputTexture, width, height, pw, ph, kPictureZ, std::string(), sceneMain);
    mNodePicture->setGeometry(mPictureRect);
    mNodePicture->setRotation(rotation);

    if (outputType == MVN_OUTPUT_SCENE) {
        mNodeOut = new PlaneNode(mRttMain, pw, ph, pw, ph, zOrder, std::string());
        mNodeOut->setGeometry(frame);
    } else if (outputType == MVN_OUTPUT_RTT_NODE) {
        std::string group = producer->getGroup();
        if (group.empty()) {
            mNodeOut = new PlaneNode(mRttMain, pw, ph, pw, ph, zOrder, std::string());
        } else {
            mNodeOut = new PlaneNode(mRttMain, pw, ph, pw, ph, zOrder, std::string(), group);
        }
        mNodeOut->setGeometry(frame);
        block();
        setString("_outputRtt", mSceneMain->getRttName());
        unblock();
    } else {
        block();
        setString("_outputRtt", mSceneMain->getRttName());
        unblock();
    }
    _SetDefaultParameters(passW, passH);
    log_debug(kTag, "%s %s _Config done", getStringId().c_str(), resource.c_str());
}

void MVNFilterCanvas::_pictureFileSize(const std::string& texture, int& width, int& height) {
    int w = 0;
    int h = 0;
    MVNOgreManager::getSingleton()->callRenderableWait(
        [&]() {
            try {
                Ogre::TexturePtr picture = Ogre::TextureManager::getSingleton().load(texture, Ogre::RGN_AUTODETECT);
                if (picture) {
                    w = static_cast<int>(picture->getSrcWidth());
                    h = static_cast<int>(picture->getSrcHeight());
                }
            } catch (const std::exception& e) {
                log_error(kTag, "%s picture %s not loaded: %s", getStringId().c_str(), texture.c_str(), e.what());
            }
        },
        "canvasPictureSize");
    if (w > 0 && h > 0) {
        width = w;
        height = h;
    }
}

void MVNFilterCanvas::_SetDefaultParameters(int width, int height) {
    bool colour = getInt32("canvasType", kCanvasBlur) == kCanvasColor;
    MVNOgreManager::getSingleton()->callRenderableWait(
        [&]() {
            // Sizes of the picture, not of the smaller first pass: the
            // kernel's steps are picture texels.
            if (mPass) {
                mPass->setUniformFloat("ufmImageW", static_cast<float>(width));
                mPass->setUniformFloat("ufmImageH", static_cast<float>(height));
            }
            if (!colour && mNodeBack) {
                mNodeBack->setUniformFloat("ufmImageW", static_cast<float>(width), false);
                mNodeBack->setUniformFloat("ufmImageH", static_cast<float>(height), false);
            }
        },
        "setDefParams");
    if (getDouble("ufmStrength", -1.0) != -1.0) {
        _sendUniform("ufmStrength");
        return;
    }
    MVNOgreManager::getSingleton()->callRenderableWait(
        [&]() {
            if (mPass) mPass->setUniformFloat("ufmStrength", kDefaultSpread);
            if (!colour && mNodeBack) mNodeBack->setUniformFloat("ufmStrength", kDefaultSpread, false);
        },
        "setUniform");
}

float MVNFilterCanvas::_spread() const {
    double v = getDouble("ufmStrength", -1.0);
    return v < 0 ? kDefaultSpread : static_cast<float>(v * 4 - 3);
}

int MVNFilterCanvas::_passScale(float spread, int width, int height) {
    int most = std::max(1, std::min(width, height) / kSmallestPass);
    return std::clamp(static_cast<int>(std::floor(spread)), 1, most);
}

void MVNFilterCanvas::_SetUniform(const std::string& name) {
    _sendUniform(name);
    // A strength that wants another size of the first pass rebuilds it; a
    // refused one changes nothing.
    if (name != "ufmStrength" || getDouble("ufmStrength", -1.0) < 0) return;
    bool rescale = false;
    {
        AutoLock guard(mLock);
        rescale = mPass != nullptr && _passScale(_spread(), mPassWidth, mPassHeight) != mPassScale;
    }
    if (rescale) reconfig();
}

void MVNFilterCanvas::_sendUniform(const std::string& name) {
    bool colour = getInt32("canvasType", kCanvasBlur) == kCanvasColor;
    double v = getDouble(name.c_str(), -1.0);
    MVNOgreManager::getSingleton()->callRenderableWait(
        [&]() {
            if (v < 0) {
                log_warn(kTag, "invalid %s value %f", name.c_str(), v);
                return;
            }
            double sent = v;
            if (name == "ufmStrength") {
                sent = v * 4 - 3;
                log_debug(kTag, "fixed strength:%f", sent);
            }
            if (mPass) mPass->setUniformFloat(name, static_cast<float>(sent));
            if (!colour && mNodeBack) mNodeBack->setUniformFloat(name, static_cast<float>(sent), false);
        },
        "setUniform");
}

void MVNFilterCanvas::_OnOtherPropertyChanged(const char* key) {
    if (std::strcmp(key, "color") == 0) {
        if (mInited) _OnColorChanged(getColor("color", MVNColor4B(0, 0, 0, 1)));
    } else if (std::strcmp(key, "resource") == 0) {
        if (mInited) _OnResourceChanged(getString("resource", ""));
    } else if (std::strcmp(key, "canvasType") == 0) {
        if (mInited) _OnTypeChanged(getInt32("canvasType", kCanvasBlur));
    }
}

void MVNFilterCanvas::_swapBackground(MVNFrame* background) {
    if (mBackground) MVNFrame::pushBackPool(mBackground);
    mBackground = background;
    mBackgroundDirty = true;
}

void MVNFilterCanvas::_OnColorChanged(const MVNColor4B& color) {
    if (getInt32("canvasType", kCanvasBlur) != kCanvasColor) return;
    AutoLock guard(mLock);
    MVNFrame* background = _loadBgColor(color);
    if (background == nullptr) return;
    _swapBackground(background);
    if (mNodeBack && _upload(mNodeBack, mBackground, "%s convert color failed")) mBackgroundDirty = false;
}

void MVNFilterCanvas::_OnResourceChanged(const std::string& path) {
    if (getInt32("canvasType", kCanvasBlur) != kCanvasImage) return;
    {
        AutoLock guard(mLock);
        if (path.empty()) {
            log_error(kTag, "_OnResourceChanged not set image path");
            return;
        }
        MVNFrame* background = _loadBgImage(path);
        if (background == nullptr) {
            log_error(kTag, "_OnResourceChanged load bg image failed");
            return;
        }
        _swapBackground(background);
    }
    reconfig();
    if (MVNProducer* producer = connectedProducer()) producer->fireCanvasChanged();
}

void MVNFilterCanvas::_OnTypeChanged(int type) {
    {
        AutoLock guard(mLock);
        MVNFrame* background = nullptr;
        if (type == kCanvasColor) {
            background = _loadBgColor(MVNColor4B(0, 0, 0, 255));
            if (background == nullptr) {
                log_error(kTag, "_OnResourceChanged load color image failed");
                return;
            }
        } else if (type == kCanvasImage) {
            std::string path = getString("resource", "");
            if (path.empty()) {
                log_error(kTag, "_OnTypeChanged not set image path");
                return;
            }
            background = _loadBgImage(path);
            if (background == nullptr) {
                log_error(kTag, "_OnResourceChanged load bg image failed");
                return;
            }
        }
        if (type == kCanvasColor) {
            block();
            setColor("color", MVNColor4B(0, 0, 0, 255));
            unblock();
        }
        _swapBackground(background);
    }
    reconfig();
    if (MVNProducer* producer = connectedProducer()) producer->fireCanvasChanged();
}

MVNFrame* MVNFilterCanvas::_loadBgImage(const std::string& path) {
    MVNFrame* frame = MVNImage::loadFromFile(path, profile().width(), profile().height());
    if (frame == nullptr) log_error(kTag, "load image %s failed", path.c_str());
    return frame;
}

MVNFrame* MVNFilterCanvas::_loadBgColor(const MVNColor4B& color) {
    const int w = profile().width();
    const int h = profile().height();
    int stride = getPixelsStride(1, MVN_COLOR_BGRA);
    if (stride <= 0 || w <= 0 || h <= 0) {
        log_error(kTag, "not support color format:%s", getColorFormatName(MVN_COLOR_BGRA));
        return nullptr;
    }
    int size = w * h * stride;
    MVNFrame* frame = MVNFrame::pullFromPool(1, size);
    if (frame == nullptr || frame->buffer() == nullptr) {
        log_error(kTag, "allloc color frame failed");
        if (frame) MVNFrame::pushBackPool(frame);
        return nullptr;
    }
    uint8_t* p = frame->buffer()->ptr();
    for (int i = 0; i < w * h; ++i, p += stride) {
        p[0] = color.b;
        p[1] = color.g;
        p[2] = color.r;
        p[3] = color.a;
    }
    frame->setColorFormat(MVN_COLOR_BGRA);
    frame->setWidth(w);
    frame->setHeight(h);
    frame->setSize(size);
    return frame;
}

bool MVNFilterCanvas::_upload(MVNOgreTextureNodeImpl* node, MVNFrame* frame, const char* failure) {
    if (node == nullptr || frame == nullptr) return true;
    if (frame->colorFormat() == MVN_COLOR_RTT) return true;
    return _uploadPixels(
        frame, [node](unsigned char* data, int width, int height) { node->updateTexture(data, width, height); },
        failure);
}

bool MVNFilterCanvas::_uploadToPass(MVNFrame* frame, const char* failure) {
    if (mPass == nullptr || frame == nullptr) return true;
    if (frame->colorFormat() == MVN_COLOR_RTT) return true;
    return _uploadPixels(
        frame,
        [this](unsigned char* data, int width, int height) {
            MVNOgreManager::getSingleton()->callRenderableWait(
                [&]() {
                    if (mPass) mPass->updateTexture(data, width, height);
                },
                "canvasPassUpdateTexture");
        },
        failure);
}

void MVNFilterCanvas::updateCanvas(MVNFrame* frame) {
    AutoLock guard(mLock);
    if (!getBoolean("useOrigin", true) || mBackground != nullptr || frame == nullptr || mPass == nullptr) return;
    if (_uploadToPass(frame, "%s, updateCanvas failed,  convert color failed")) mCanvasFed = true;
}

bool MVNFilterCanvas::_beforeInput(int position) {
    for (MVNOgreTextureNodeImpl* node : {mNodeBack, mNodePicture, mNodeOut}) {
        if (node) node->setVisible(true);
    }
    if (mBackground && mBackgroundDirty) {
        if (getInt32("canvasType", kCanvasBlur) == kCanvasColor) {
            if (!_upload(mNodeBack, mBackground, "%s convert color failed")) return false;
            if (mNodeBack) mBackgroundDirty = false;
        } else {
            if (!_uploadToPass(mBackground, "%s convert color failed")) return false;
            if (mPass) mBackgroundDirty = false;
        }
    }
    return true;
}

bool MVNFilterCanvas::_takeFrame(MVNFrame* frame) {
    if (frame != nullptr) {
        // Without a picture of its own the blur reads the clip's, unless
        // the host already gave it the unscaled one.
        bool feedsBlur = mBackground == nullptr && mPass != nullptr && !mCanvasFed;
        if (!_upload(mNodePicture, frame, "%s convert color failed")) return false;
        if (feedsBlur) _uploadToPass(frame, "%s convert color failed");
    }
    mCanvasFed = false;
    return true;
}

void MVNFilterCanvas::_render(int position, int inputType, int outputType) {
    MVNOgreManager::getSingleton()->callRenderableWait(
        [this]() {
            if (mPass) mPass->draw();
            if (mSceneMain && mSceneMain->getRenderTarget()) mSceneMain->getRenderTarget()->update(true);
        },
        "canvasRender");
}

void MVNFilterCanvas::setGeometry(const MVNRect& rect) {
    if (mNodeOut) mNodeOut->setGeometry(rect);
}

void MVNFilterCanvas::_OnRotationChanged(int rotation) {
    log_debug(kTag, "%s _OnRotationChanged %d", getStringId().c_str(), rotation);
    if (mNodeOut && getInt32("_outputType", MVN_OUTPUT_NONE) == MVN_OUTPUT_SCENE) mNodeOut->setRotation(rotation);
}

void MVNFilterCanvas::_releaseFilterNode() {
    for (MVNOgreTextureNodeImpl** node : {&mNodeBack, &mNodePicture, &mNodeOut}) {
        delete *node;
        *node = nullptr;
    }
    if (mPass == nullptr && mSceneMain == nullptr) return;
    MVNOgreManager::getSingleton()->callRenderableWait(
        [this]() {
            delete mPass;
            mPass = nullptr;
            delete mSceneMain;
            mSceneMain = nullptr;
            MVNOgreContextBase::resyncCurrentRenderTarget();
        },
        "deleteSceneManager");
}

}  // namespace Morvane
